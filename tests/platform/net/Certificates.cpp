#include "tests/platform/net/Certificates.h"

#include <QSslCertificate>
#include <QSslConfiguration>

#include <memory>

#include <openssl/bio.h>
#include <openssl/ec.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/rsa.h>
#include <openssl/x509v3.h>

namespace vynlex {
namespace {

template<typename T, void (*Free)(T *)> struct Deleter {
    void operator()(T *object) const { Free(object); }
};
using Key = std::unique_ptr<EVP_PKEY, Deleter<EVP_PKEY, EVP_PKEY_free>>;
using Certificate = std::unique_ptr<X509, Deleter<X509, X509_free>>;
using Bio = std::unique_ptr<BIO, Deleter<BIO, BIO_free_all>>;

QByteArray textOf(const Bio &bio)
{
    char *data = nullptr;
    const long size = BIO_get_mem_data(bio.get(), &data);
    return QByteArray(data, size);
}

Bio reader(const QByteArray &pem)
{
    return Bio(BIO_new_mem_buf(pem.constData(), static_cast<int>(pem.size())));
}

void addExtension(X509 *certificate, X509 *issuer, int id, const QByteArray &value)
{
    X509V3_CTX context;
    X509V3_set_ctx(&context, issuer, certificate, nullptr, nullptr, 0);
    X509_EXTENSION *extension = X509V3_EXT_conf_nid(nullptr, &context, id, value.constData());
    X509_add_ext(certificate, extension, -1);
    X509_EXTENSION_free(extension);
}

} // namespace

Identity makeIdentity(const CertificateWish &wish, const Identity *issuer)
{
    static long lastSerial = 1;
    const Key key(wish.rsaBits > 0 ? EVP_RSA_gen(static_cast<unsigned>(wish.rsaBits)) : EVP_EC_gen("P-256"));
    const Certificate certificate(X509_new());
    X509_set_version(certificate.get(), X509_VERSION_3);
    ASN1_INTEGER_set(X509_get_serialNumber(certificate.get()), ++lastSerial);
    X509_gmtime_adj(X509_getm_notBefore(certificate.get()), 86'400L * wish.validFromDays);
    X509_gmtime_adj(X509_getm_notAfter(certificate.get()), 86'400L * wish.validToDays);
    X509_set_pubkey(certificate.get(), key.get());
    X509_NAME_add_entry_by_txt(X509_get_subject_name(certificate.get()), "CN", MBSTRING_UTF8,
                               reinterpret_cast<const unsigned char *>(wish.commonName.constData()), -1, -1, 0);

    Certificate issuerCertificate;
    Key issuerKey;
    if (issuer) {
        issuerCertificate.reset(PEM_read_bio_X509(reader(issuer->certificatePem).get(), nullptr, nullptr, nullptr));
        issuerKey.reset(PEM_read_bio_PrivateKey(reader(issuer->keyPem).get(), nullptr, nullptr, nullptr));
    }
    X509 *const signer = issuer ? issuerCertificate.get() : certificate.get();
    X509_set_issuer_name(certificate.get(), X509_get_subject_name(signer));
    addExtension(certificate.get(), signer, NID_basic_constraints,
                 wish.isAuthority ? "critical,CA:TRUE" : "critical,CA:FALSE");
    if (wish.isAuthority)
        addExtension(certificate.get(), signer, NID_key_usage, "critical,keyCertSign,cRLSign");
    else
        addExtension(certificate.get(), signer, NID_ext_key_usage, wish.forServers ? "serverAuth" : "clientAuth");
    if (!wish.alternativeNames.isEmpty())
        addExtension(certificate.get(), signer, NID_subject_alt_name, wish.alternativeNames.join(','));
    X509_sign(certificate.get(), issuer ? issuerKey.get() : key.get(), wish.sha1 ? EVP_sha1() : EVP_sha256());

    Identity identity;
    const Bio certificateText(BIO_new(BIO_s_mem()));
    PEM_write_bio_X509(certificateText.get(), certificate.get());
    identity.certificatePem = textOf(certificateText);
    const Bio keyText(BIO_new(BIO_s_mem()));
    PEM_write_bio_PrivateKey(keyText.get(), key.get(), nullptr, nullptr, 0, nullptr, nullptr);
    identity.keyPem = textOf(keyText);
    identity.chainPem = identity.certificatePem;
    if (issuer)
        identity.chainPem += issuer->chainPem;
    return identity;
}

Identity makeAuthority(const QByteArray &name, const Identity *issuer)
{
    CertificateWish wish;
    wish.commonName = name;
    wish.alternativeNames = {};
    wish.isAuthority = true;
    return makeIdentity(wish, issuer);
}

void trustOnly(const QByteArrayList &rootsPem)
{
    QList<QSslCertificate> roots;
    for (const QByteArray &pem : rootsPem)
        roots << QSslCertificate(pem);
    QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
    configuration.setCaCertificates(roots);
    QSslConfiguration::setDefaultConfiguration(configuration);
}

} // namespace vynlex
