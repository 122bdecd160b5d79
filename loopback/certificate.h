#pragma once

#include <QDateTime>
#include <QSslCertificate>
#include <QSslKey>

#include <memory>

namespace loopback {

/// A certificate with its key.
struct Certificate
{
    QSslCertificate certificate;
    QSslKey key;
};

/// From when to when a certificate holds.
struct Validity
{
    QDateTime from = QDateTime::currentDateTimeUtc().addDays(-1);
    QDateTime to = QDateTime::currentDateTimeUtc().addDays(30);
};

/// A certificate for one host with its key, made anew. The key exists in memory only.
class Issued
{
public:
    /// Vouched for by the issuer, or by itself where there is none. Only the latter vouches for others.
    explicit Issued(const QByteArray &host, const Issued *issuer = nullptr, const Validity &validity = {});
    ~Issued();
    Q_DISABLE_COPY_MOVE(Issued)

    Certificate certificate() const;

private:
    /// The library's own objects: Qt's would outlive the TLS plugin at the end of the process.
    struct Parts;
    std::unique_ptr<Parts> parts;
};

} // namespace loopback
