#pragma once

#include <boost/asio/ssl/context.hpp>

#include <filesystem>
#include <string>
#include <vector>

namespace sandbox {

/// The sandbox's own certificate authority and the certificate for all its host names, in a folder of the user's.
///
/// The folder (mode 0700) holds "ca.pem", which a client is to trust, "ca.key", "host.pem" and "host.key" (keys with
/// mode 0600). The authority is made once and lasts ten years. The host certificate is made anew when the names change
/// or its end is less than 30 days away; it lasts 397 days, the longest that all clients accept. Keys are on the curve
/// P-256.
class CertificateAuthority {
public:
    /// Makes whatever is missing. Several processes may do so at once. Throws std::runtime_error with the file's name
    /// when the folder cannot be used or a file in it is damaged: nothing is overwritten then.
    ///
    /// `hostNames` may have wildcards; localhost and the loopback addresses are always added.
    CertificateAuthority(std::filesystem::path folder, const std::vector<std::string> &hostNames);

    /// The file that a client is to trust.
    [[nodiscard]] std::filesystem::path certificateFile() const { return m_folder / "ca.pem"; }

    /// Server side, TLS 1.2 and later.
    [[nodiscard]] boost::asio::ssl::context serverContext() const;

private:
    std::filesystem::path m_folder;
};

} // namespace sandbox
