#pragma once

#include "tests/support/Files.h"

#include <QProcess>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QSslKey>
#include <QTemporaryDir>

namespace orvane::test {

/// What a server on 127.0.0.1 needs to speak https. Nobody vouches for it unless a test does.
class Certificate
{
public:
    /// Ends the test program when openssl cannot make it.
    Certificate()
    {
        QProcess openssl;
        openssl.start(QStringLiteral("openssl"),
                      {QStringLiteral("req"), QStringLiteral("-x509"), QStringLiteral("-newkey"),
                       QStringLiteral("rsa:2048"), QStringLiteral("-nodes"), QStringLiteral("-subj"),
                       QStringLiteral("/CN=127.0.0.1"), QStringLiteral("-addext"),
                       QStringLiteral("subjectAltName=IP:127.0.0.1"), QStringLiteral("-keyout"), keyFile(),
                       QStringLiteral("-out"), file()});
        if (!openssl.waitForFinished() || openssl.exitCode() != 0)
            qFatal("openssl cannot make a certificate");
        m_server.setLocalCertificate(QSslCertificate(contentOf(file())));
        m_server.setPrivateKey(QSslKey(contentOf(keyFile()), QSsl::Rsa));
    }

    /// With the certificate and its key.
    [[nodiscard]] const QSslConfiguration &server() const { return m_server; }
    /// The certificate alone, as PEM.
    [[nodiscard]] QString file() const { return m_folder.filePath(QStringLiteral("certificate.pem")); }

private:
    [[nodiscard]] QString keyFile() const { return m_folder.filePath(QStringLiteral("key.pem")); }

    QTemporaryDir m_folder;
    QSslConfiguration m_server = QSslConfiguration::defaultConfiguration();
};

} // namespace orvane::test
