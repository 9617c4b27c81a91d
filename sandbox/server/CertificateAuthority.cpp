#include "sandbox/server/CertificateAuthority.h"

#include <openssl/bio.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/rand.h>
#include <openssl/x509v3.h>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <memory>
#include <set>
#include <sstream>
#include <stdexcept>
#include <utility>

namespace sandbox {

namespace fs = std::filesystem;

namespace {

template<auto Free> struct Freed {
    template<class T> void operator()(T *object) const { Free(object); }
};
using Key = std::unique_ptr<EVP_PKEY, Freed<EVP_PKEY_free>>;
using Certificate = std::unique_ptr<X509, Freed<X509_free>>;
using Bio = std::unique_ptr<BIO, Freed<BIO_free_all>>;
using Extension = std::unique_ptr<X509_EXTENSION, Freed<X509_EXTENSION_free>>;
using AltNames = std::unique_ptr<GENERAL_NAMES, Freed<GENERAL_NAMES_free>>;

constexpr long daySeconds = 24L * 60 * 60;
constexpr long authorityDays = 3650;
constexpr long hostDays = 397;
constexpr long renewDays = 30;

[[noreturn]] void fail(const std::string &what)
{
    std::string text = what;
    if (const auto code = ERR_get_error()) {
        std::array<char, 256> reason{};
        ERR_error_string_n(code, reason.data(), reason.size());
        text += std::string(": ") + reason.data();
    }
    ERR_clear_error();
    throw std::runtime_error(text);
}

[[noreturn]] void failOnFile(const fs::path &file, const char *what)
{
    throw std::runtime_error(file.string() + ": " + what + ": " + std::strerror(errno));
}

/// Holds an exclusive lock on a file for its life time: two processes at their first start make one authority.
class FolderLock {
public:
    explicit FolderLock(const fs::path &file)
        : m_descriptor(open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600))
    {
        if (m_descriptor < 0)
            failOnFile(file, "cannot open");
        while (flock(m_descriptor, LOCK_EX) != 0) {
            if (errno != EINTR) {
                close(m_descriptor);
                failOnFile(file, "cannot lock");
            }
        }
    }
    ~FolderLock() { close(m_descriptor); }
    FolderLock(const FolderLock &) = delete;
    FolderLock &operator=(const FolderLock &) = delete;

private:
    int m_descriptor;
};

/// Complete or not there at all, whatever happens in between.
void writeFile(const fs::path &file, const std::string &content, mode_t mode)
{
    const fs::path draft = file.string() + ".new";
    unlink(draft.c_str());
    const int descriptor = open(draft.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
    if (descriptor < 0)
        failOnFile(draft, "cannot create");
    const auto written = write(descriptor, content.data(), content.size());
    const bool complete = std::cmp_equal(written, content.size()) && fsync(descriptor) == 0;
    if (close(descriptor) != 0 || !complete || rename(draft.c_str(), file.c_str()) != 0)
        failOnFile(file, "cannot write");
}

std::string readFile(const fs::path &file)
{
    const std::ifstream in(file, std::ios::binary);
    if (!in)
        failOnFile(file, "cannot read");
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

std::string pemText(BIO *bio)
{
    char *data = nullptr;
    const long size = BIO_get_mem_data(bio, &data);
    return {data, static_cast<std::size_t>(size)};
}

std::string toPem(EVP_PKEY *key)
{
    const Bio bio(BIO_new(BIO_s_mem()));
    if (!PEM_write_bio_PrivateKey(bio.get(), key, nullptr, nullptr, 0, nullptr, nullptr))
        fail("cannot write a key");
    return pemText(bio.get());
}

std::string toPem(X509 *certificate)
{
    const Bio bio(BIO_new(BIO_s_mem()));
    if (!PEM_write_bio_X509(bio.get(), certificate))
        fail("cannot write a certificate");
    return pemText(bio.get());
}

Key loadKey(const fs::path &file)
{
    const std::string pem = readFile(file);
    const Bio bio(BIO_new_mem_buf(pem.data(), static_cast<int>(pem.size())));
    Key key(PEM_read_bio_PrivateKey(bio.get(), nullptr, nullptr, nullptr));
    if (!key)
        fail(file.string() + ": not a private key (to start afresh, remove the folder)");
    return key;
}

Certificate loadCertificate(const fs::path &file)
{
    const std::string pem = readFile(file);
    const Bio bio(BIO_new_mem_buf(pem.data(), static_cast<int>(pem.size())));
    Certificate certificate(PEM_read_bio_X509(bio.get(), nullptr, nullptr, nullptr));
    if (!certificate)
        fail(file.string() + ": not a certificate (to start afresh, remove the folder)");
    return certificate;
}

Key newKey()
{
    Key key(EVP_EC_gen("P-256"));
    if (!key)
        fail("cannot make a key");
    return key;
}

void addExtension(X509 *certificate, X509 *issuer, int nid, const std::string &value)
{
    X509V3_CTX context;
    X509V3_set_ctx(&context, issuer, certificate, nullptr, nullptr, 0);
    const Extension extension(X509V3_EXT_conf_nid(nullptr, &context, nid, value.c_str()));
    if (!extension || !X509_add_ext(certificate, extension.get(), -1))
        fail("cannot add an extension to a certificate");
}

/// Serial number, dates, subject and key; the caller adds extensions and signs.
Certificate draftCertificate(EVP_PKEY *key, const std::string &commonName, long days)
{
    Certificate certificate(X509_new());
    std::array<unsigned char, 16> serial{};
    if (!certificate || RAND_bytes(serial.data(), static_cast<int>(serial.size())) != 1)
        fail("cannot make a certificate");
    serial[0] &= 0x7F; // a serial number is positive
    BIGNUM *number = BN_bin2bn(serial.data(), static_cast<int>(serial.size()), nullptr);
    BN_to_ASN1_INTEGER(number, X509_get_serialNumber(certificate.get()));
    BN_free(number);

    X509_set_version(certificate.get(), X509_VERSION_3);
    X509_gmtime_adj(X509_getm_notBefore(certificate.get()), -daySeconds); // a client's clock may be behind
    X509_gmtime_adj(X509_getm_notAfter(certificate.get()), days * daySeconds);
    X509_set_pubkey(certificate.get(), key);
    X509_NAME_add_entry_by_txt(X509_get_subject_name(certificate.get()), "CN", MBSTRING_UTF8,
                               reinterpret_cast<const unsigned char *>(commonName.c_str()), -1, -1, 0);
    return certificate;
}

Certificate newAuthority(EVP_PKEY *key)
{
    Certificate certificate = draftCertificate(key, "confera-sandbox local authority", authorityDays);
    X509_set_issuer_name(certificate.get(), X509_get_subject_name(certificate.get()));
    addExtension(certificate.get(), certificate.get(), NID_basic_constraints, "critical,CA:TRUE,pathlen:0");
    addExtension(certificate.get(), certificate.get(), NID_key_usage, "critical,keyCertSign,cRLSign");
    addExtension(certificate.get(), certificate.get(), NID_subject_key_identifier, "hash");
    if (!X509_sign(certificate.get(), key, EVP_sha256()))
        fail("cannot sign the authority's certificate");
    return certificate;
}

std::string altNames(const std::set<std::string> &names)
{
    std::string value;
    for (const auto &name : names)
        value += "DNS:" + name + ",";
    return value + "IP:127.0.0.1,IP:::1";
}

Certificate newHostCertificate(EVP_PKEY *key, const std::set<std::string> &names, X509 *authority,
                               EVP_PKEY *authorityKey)
{
    Certificate certificate = draftCertificate(key, "confera-sandbox", hostDays - 1);
    X509_set_issuer_name(certificate.get(), X509_get_subject_name(authority));
    addExtension(certificate.get(), authority, NID_basic_constraints, "critical,CA:FALSE");
    addExtension(certificate.get(), authority, NID_key_usage, "critical,digitalSignature");
    addExtension(certificate.get(), authority, NID_ext_key_usage, "serverAuth");
    addExtension(certificate.get(), authority, NID_subject_key_identifier, "hash");
    addExtension(certificate.get(), authority, NID_authority_key_identifier, "keyid");
    addExtension(certificate.get(), authority, NID_subject_alt_name, altNames(names));
    if (!X509_sign(certificate.get(), authorityKey, EVP_sha256()))
        fail("cannot sign the host certificate");
    return certificate;
}

bool endsSoon(X509 *certificate)
{
    int days = 0;
    int seconds = 0;
    ASN1_TIME_diff(&days, &seconds, nullptr, X509_get0_notAfter(certificate));
    return days < renewDays;
}

std::set<std::string> dnsNames(X509 *certificate)
{
    const AltNames names(
        static_cast<GENERAL_NAMES *>(X509_get_ext_d2i(certificate, NID_subject_alt_name, nullptr, nullptr)));
    std::set<std::string> found;
    for (int i = 0; names && i < sk_GENERAL_NAME_num(names.get()); ++i) {
        const GENERAL_NAME *name = sk_GENERAL_NAME_value(names.get(), i);
        if (name->type == GEN_DNS) {
            const auto *text = reinterpret_cast<const char *>(ASN1_STRING_get0_data(name->d.dNSName));
            found.emplace(text, static_cast<std::size_t>(ASN1_STRING_length(name->d.dNSName)));
        }
    }
    return found;
}

} // namespace

CertificateAuthority::CertificateAuthority(fs::path folder, const std::vector<std::string> &hostNames)
    : m_folder(std::move(folder))
{
    std::error_code error;
    fs::create_directories(m_folder, error);
    if (error)
        throw std::runtime_error(m_folder.string() + ": cannot create: " + error.message());
    if (chmod(m_folder.c_str(), 0700) != 0)
        failOnFile(m_folder, "cannot restrict to its owner");
    const FolderLock lock(m_folder / "lock");

    const fs::path authorityKeyFile = m_folder / "ca.key";
    if (!fs::exists(authorityKeyFile) && !fs::exists(certificateFile())) {
        const Key key = newKey();
        writeFile(authorityKeyFile, toPem(key.get()), 0600);
        writeFile(certificateFile(), toPem(newAuthority(key.get()).get()), 0644);
    }
    const Key authorityKey = loadKey(authorityKeyFile);
    Certificate authority = loadCertificate(certificateFile());
    if (X509_check_private_key(authority.get(), authorityKey.get()) != 1)
        fail(certificateFile().string() + ": does not belong to ca.key (to start afresh, remove the folder)");
    if (endsSoon(authority.get())) {
        authority = newAuthority(authorityKey.get());
        writeFile(certificateFile(), toPem(authority.get()), 0644);
    }

    std::set<std::string> names(hostNames.begin(), hostNames.end());
    names.erase("127.0.0.1"); // addresses are names of another type
    names.erase("*");
    names.insert("localhost");
    const fs::path hostKeyFile = m_folder / "host.key";
    const fs::path hostFile = m_folder / "host.pem";
    if (fs::exists(hostKeyFile) && fs::exists(hostFile)) {
        const Certificate current = loadCertificate(hostFile);
        const bool matches = X509_check_private_key(current.get(), loadKey(hostKeyFile).get()) == 1;
        if (matches && dnsNames(current.get()) == names && !endsSoon(current.get()) &&
            X509_verify(current.get(), authorityKey.get()) == 1)
            return;
        ERR_clear_error();
    }
    const Key hostKey = newKey();
    writeFile(hostKeyFile, toPem(hostKey.get()), 0600);
    writeFile(hostFile, toPem(newHostCertificate(hostKey.get(), names, authority.get(), authorityKey.get()).get()),
              0644);
}

boost::asio::ssl::context CertificateAuthority::serverContext() const
{
    namespace ssl = boost::asio::ssl;
    const FolderLock lock(m_folder / "lock"); // key and certificate are to be a pair
    ssl::context context(ssl::context::tls_server);
    SSL_CTX_set_min_proto_version(context.native_handle(), TLS1_2_VERSION);
    context.use_certificate_chain_file((m_folder / "host.pem").string());
    context.use_private_key_file((m_folder / "host.key").string(), ssl::context::pem);
    return context;
}

} // namespace sandbox
