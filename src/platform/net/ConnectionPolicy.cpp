#include "platform/net/ConnectionPolicy.h"

#include <QHostAddress>
#include <QNetworkProxy>
#include <QNetworkProxyFactory>
#include <QSslCertificate>
#include <QSslConfiguration>

#include <mutex>
#include <utility>

#include <openssl/ssl.h>
#include <openssl/x509v3.h>

namespace vynlex {
namespace {

std::shared_ptr<X509_STORE> storeOf(const QList<QSslCertificate> &certificates)
{
    std::shared_ptr<X509_STORE> store(X509_STORE_new(), X509_STORE_free);
    for (const QSslCertificate &certificate : certificates) {
        // Through DER, because `handle()` is an OpenSSL object only with one of Qt's TLS backends.
        const QByteArray der = certificate.toDer();
        const auto *begin = reinterpret_cast<const unsigned char *>(der.constData());
        if (X509 *parsed = d2i_X509(nullptr, &begin, static_cast<long>(der.size()))) {
            X509_STORE_add_cert(store.get(), parsed);
            X509_free(parsed);
        }
    }
    return store;
}

ProxyRoute proxyFor(const QUrl &url)
{
    const QList<QNetworkProxy> proxies = QNetworkProxyFactory::proxyForQuery(QNetworkProxyQuery(url));
    if (proxies.isEmpty())
        return {};
    const QNetworkProxy &first = proxies.front();
    ProxyRoute route{ProxyRoute::Kind::Unsupported, first.hostName(), first.port(), first.user(), first.password()};
    switch (first.type()) {
    case QNetworkProxy::NoProxy:
    case QNetworkProxy::DefaultProxy:
        return {};
    case QNetworkProxy::HttpProxy:
    case QNetworkProxy::HttpCachingProxy:
        route.kind = ProxyRoute::Kind::Http;
        break;
    case QNetworkProxy::Socks5Proxy:
        route.kind = ProxyRoute::Kind::Socks5;
        break;
    case QNetworkProxy::FtpCachingProxy:
        break;
    }
    return route;
}

} // namespace

/// In the form that OpenSSL uses, from the moment on when a connection needs it: the system's are a lot to read, and
/// the main thread, which alone knows what was chosen, has no use for them.
class ConnectionPolicy::Authorities {
public:
    explicit Authorities(QList<QSslCertificate> chosen)
        : m_chosen(std::move(chosen))
    {
    }

    /// Those of what the application has chosen, which may be nothing: one object until that changes. Main thread.
    static std::shared_ptr<Authorities> current()
    {
        static std::shared_ptr<Authorities> known;
        const QList<QSslCertificate> chosen = QSslConfiguration::defaultConfiguration().caCertificates();
        if (!known || known->m_chosen != chosen)
            known = std::make_shared<Authorities>(chosen);
        return known;
    }

    /// Any thread.
    X509_STORE *store()
    {
        std::call_once(m_read, [this] {
            m_store = storeOf(m_chosen.isEmpty() ? QSslConfiguration::systemCaCertificates() : m_chosen);
        });
        return m_store.get();
    }

private:
    const QList<QSslCertificate> m_chosen;
    std::once_flag m_read;
    std::shared_ptr<X509_STORE> m_store;
};

ConnectionPolicy ConnectionPolicy::current(const QUrl &url)
{
    ConnectionPolicy policy;
    policy.m_authorities = Authorities::current();
    policy.m_proxy = proxyFor(url);
    return policy;
}

bool ConnectionPolicy::applyTo(ssl_ctx_st *context, const QByteArray &host) const
{
    X509_STORE *const authorities = m_authorities->store();
    X509_STORE_up_ref(authorities);
    SSL_CTX_set_cert_store(context, authorities);
    SSL_CTX_set_min_proto_version(context, TLS1_2_VERSION);
    SSL_CTX_set_security_level(context, 2);
    SSL_CTX_set_verify(context, SSL_VERIFY_PEER, nullptr);

    X509_VERIFY_PARAM *check = SSL_CTX_get0_param(context);
    X509_VERIFY_PARAM_set_hostflags(check, X509_CHECK_FLAG_NEVER_CHECK_SUBJECT | X509_CHECK_FLAG_NO_PARTIAL_WILDCARDS);
    const bool isAddress = !QHostAddress(QString::fromLatin1(host)).isNull();
    if (isAddress)
        return X509_VERIFY_PARAM_set1_ip_asc(check, host.constData()) == 1;
    return !host.isEmpty() && X509_VERIFY_PARAM_set1_host(check, host.constData(), host.size()) == 1;
}

} // namespace vynlex
