#include "standin/certificate.h"

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;

namespace standin {

namespace {

// Text is kept instead of Qt's objects: those would outlive the TLS plugin at the end of the process.
struct Pem
{
    QByteArray certificate;
    QByteArray key;
};

void runOpenssl(const QStringList &arguments)
{
    QProcess openssl;
    openssl.start(u"openssl"_s, arguments);
    if (!openssl.waitForFinished() || openssl.exitStatus() != QProcess::NormalExit || openssl.exitCode() != 0)
        qFatal("openssl made no certificate: %ls\n%s", qUtf16Printable(openssl.errorString()),
               openssl.readAllStandardError().constData());
}

QByteArray contents(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("no certificate: %ls", qUtf16Printable(file.errorString()));
    return file.readAll();
}

QString written(const QString &path, const QByteArray &text)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size())
        qFatal("no certificate: %ls", qUtf16Printable(file.errorString()));
    return path;
}

Pem issue(const QString &host, const Pem &issuer = {}, const QStringList &validity = {})
{
    const QTemporaryDir folder;
    const QString key = folder.filePath(u"key.pem"_s);
    const QString certificate = folder.filePath(u"certificate.pem"_s);
    QStringList arguments{u"req"_s,         u"-x509"_s,    u"-newkey"_s,
                          u"ec"_s,          u"-pkeyopt"_s, u"ec_paramgen_curve:prime256v1"_s,
                          u"-noenc"_s,      u"-keyout"_s,  key,
                          u"-out"_s,        certificate,   u"-subj"_s,
                          u"/CN="_s + host, u"-addext"_s,  u"subjectAltName=DNS:"_s + host};
    if (!issuer.key.isEmpty())
        arguments << u"-CA"_s << written(folder.filePath(u"issuer.pem"_s), issuer.certificate) << u"-CAkey"_s
                  << written(folder.filePath(u"issuerkey.pem"_s), issuer.key);
    runOpenssl(arguments + validity);
    return {contents(certificate), contents(key)};
}

const Pem &pemFor(Identity identity)
{
    const auto host = u"api.openai.com"_s;
    static const Pem good = issue(host);
    switch (identity) {
    case Identity::Good:
        break;
    case Identity::WrongHost: {
        static const Pem wrongHost = issue(u"elsewhere.example"_s, good);
        return wrongHost;
    }
    case Identity::Expired: {
        static const Pem expired =
            issue(host, good, {u"-not_before"_s, u"20200101000000Z"_s, u"-not_after"_s, u"20200201000000Z"_s});
        return expired;
    }
    case Identity::UnknownIssuer: {
        static const Pem unknownIssuer = issue(host);
        return unknownIssuer;
    }
    }
    return good;
}

} // namespace

Certificate certificateFor(Identity identity)
{
    const Pem &pem = pemFor(identity);
    return {QSslCertificate(pem.certificate), QSslKey(pem.key, QSsl::Ec)};
}

} // namespace standin
