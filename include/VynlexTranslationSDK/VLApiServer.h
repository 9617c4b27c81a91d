#pragma once

#include <VynlexTranslationSDK/VynlexExport.h>

#include <QString>

#include <optional>

namespace vynlex {

/// A deployment of the backend. A plain value; known by the bare name of its host.
class VYNLEX_EXPORT VLApiServer {
public:
    /// Which deployment; `VLApiServer::demo` and its like stand for the value.
    enum Case { staging, preStage, rc, production, tenantGroups, demo };

    /// The deployment that `which` names.
    constexpr VLApiServer(Case which)
        : m_case(which)
    {
    }
    /// For comparisons and `switch`.
    constexpr operator Case() const { return m_case; }

    /// The deployment whose `rawValue` is exactly `text`: no scheme, no slash, the same letter case. None otherwise.
    static std::optional<VLApiServer> fromRawValue(const QString &text);

    /// The host name of the REST interface.
    [[nodiscard]] QString rawValue() const;
    /// The host name of the socket for events.
    [[nodiscard]] QString socketHost() const;
    /// "https://", the host and "/api".
    [[nodiscard]] QString getApiUrl() const;

private:
    Case m_case;
};

} // namespace vynlex
