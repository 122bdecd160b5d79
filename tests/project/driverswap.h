#pragma once

#include <QSqlDatabase>
#include <QSqlDriver>
#include <QSqlError>

#include <functional>

/// While it lives, this function makes the drivers of new SQLite connections; where it gives null, Qt's own is taken.
class DriverSwap
{
public:
    explicit DriverSwap(const std::function<QSqlDriver *()> &make)
    {
        QSqlDatabase::registerSqlDriver(QStringLiteral("QSQLITE"), new Maker(make));
    }
    ~DriverSwap() { QSqlDatabase::registerSqlDriver(QStringLiteral("QSQLITE"), nullptr); }
    Q_DISABLE_COPY_MOVE(DriverSwap)

private:
    class Maker : public QSqlDriverCreatorBase
    {
    public:
        explicit Maker(const std::function<QSqlDriver *()> &makeDriver)
            : make(makeDriver)
        {
        }
        QSqlDriver *createObject() const override { return make(); }

    private:
        std::function<QSqlDriver *()> make;
    };
};

/// A driver without a database behind it: it does not open.
class ClosedDriver : public QSqlDriver
{
public:
    bool hasFeature(DriverFeature) const override { return false; }
    bool open(const QString &, const QString &, const QString &, const QString &, int, const QString &) override
    {
        setLastError({QStringLiteral("refuses to open"), QStringLiteral("no memory"), QSqlError::ConnectionError});
        setOpenError(true);
        return false;
    }
    void close() override {}
    QSqlResult *createResult() const override { return nullptr; }
};
