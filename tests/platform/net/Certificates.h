#pragma once

#include <QByteArray>
#include <QByteArrayList>

namespace vynlex {

/// A certificate with its key, made by the test.
struct Identity {
    QByteArray certificatePem;
    QByteArray keyPem;
    QByteArray chainPem; ///< What a server sends: the certificate, then its issuers below the root.
};

struct CertificateWish {
    QByteArray commonName = "service.test";
    QByteArrayList alternativeNames = {"DNS:service.test", "IP:127.0.0.1"};
    int validFromDays = -1;
    int validToDays = 30;
    bool isAuthority = false;
    bool forServers = true; ///< Else for clients.
    bool sha1 = false;
    int rsaBits = 0; ///< 0: an elliptic curve.
};

/// Signed by `issuer`, or by itself.
Identity makeIdentity(const CertificateWish &wish, const Identity *issuer = nullptr);
Identity makeAuthority(const QByteArray &name, const Identity *issuer = nullptr);

/// Makes `roots` the only authorities that this application trusts.
void trustOnly(const QByteArrayList &rootsPem);

} // namespace vynlex
