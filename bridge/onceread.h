#pragma once

#include <QIODevice>

#include <algorithm>

namespace bridge {

/// Bytes that can be read a single time. Qt sends a request again by itself where a connection ends without an answer;
/// with a body that can't be read again it reports that instead, so that each attempt is ours and counted.
class OnceRead : public QIODevice
{
    Q_OBJECT

public:
    OnceRead(const QByteArray &content, QObject *parent)
        : QIODevice(parent)
        , bytes(content)
    {
        open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    }

    bool isSequential() const override { return true; }
    /// In silence: Qt tries this before it sends again, and QIODevice would warn.
    bool seek(qint64 /*to*/) override { return false; }
    bool atEnd() const override { return position == bytes.size(); }
    qint64 bytesAvailable() const override { return bytes.size() - position + QIODevice::bytesAvailable(); }

protected:
    qint64 readData(char *data, qint64 most) override
    {
        if (atEnd())
            return -1;
        const qint64 count = std::min<qint64>(most, bytes.size() - position);
        std::copy_n(bytes.constData() + position, count, data);
        position += count;
        return count;
    }
    qint64 writeData(const char * /*data*/, qint64 /*size*/) override { return -1; }

private:
    QByteArray bytes;
    qint64 position = 0;
};

} // namespace bridge
