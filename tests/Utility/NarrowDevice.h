#pragma once

#include <QIODevice>

#include <algorithm>
#include <limits>
#include <vector>

/// Gives and takes at most `most` bytes at a time, and fails after `room` bytes.
class NarrowDevice : public QIODevice {
public:
    explicit NarrowDevice(OpenMode mode, bool sequential = false) : m_sequential(sequential)
    {
        open(mode | Unbuffered);
    }

    QByteArray content;
    qint64 most = std::numeric_limits<qint64>::max();
    qint64 room = std::numeric_limits<qint64>::max();
    int pauses = 0; // so many reads give nothing
    std::vector<qint64> requests;

    bool isSequential() const override { return m_sequential; }
    qint64 size() const override { return content.size(); }
    bool atEnd() const override { return m_position == content.size(); }
    qint64 bytesAvailable() const override { return content.size() - m_position; }

protected:
    qint64 readData(char* data, qint64 size) override
    {
        requests.push_back(size);
        if (pauses > 0) {
            --pauses;
            return 0;
        }
        if (room == 0)
            return -1;
        const qint64 given = std::min({size, most, room, content.size() - m_position});
        std::copy_n(content.constData() + m_position, given, data);
        m_position += given;
        room -= given;
        return given;
    }

    qint64 writeData(const char* data, qint64 size) override
    {
        requests.push_back(size);
        const qint64 taken = std::min({size, most, room});
        content.append(data, int(taken));
        room -= taken;
        return taken;
    }

private:
    const bool m_sequential;
    qint64 m_position = 0;
};
