#pragma once

#include <QIODevice>

#include <algorithm>
#include <limits>
#include <stdexcept>
#include <vector>

/// Gives its content in portions, again and again, some of them empty, and fails after `room` bytes.
class NarrowDevice : public QIODevice {
public:
    static constexpr int Failure = 700; // a portion of this size is none: reading throws
    static constexpr char FailureText[] = "the device has failed";

    explicit NarrowDevice(OpenMode mode, bool sequential = false) : m_sequential(sequential)
    {
        open(mode | Unbuffered);
    }

    QByteArray content;
    std::vector<int> portions; // bytes at most; none: as many as are asked for
    qint64 room = std::numeric_limits<qint64>::max();
    std::vector<qint64> requests;

    bool isSequential() const override { return m_sequential; }
    qint64 size() const override { return content.size(); }
    bool atEnd() const override { return m_position == content.size(); }
    qint64 bytesAvailable() const override { return content.size() - m_position; }

protected:
    qint64 readData(char* data, qint64 size) override
    {
        requests.push_back(size);
        const qint64 portion = portions.empty() ? size : portions[requests.size() % portions.size()];
        if (portion == Failure)
            throw std::runtime_error(FailureText);
        if (room == 0)
            return -1;
        const qint64 given = std::min({size, portion, room, content.size() - m_position});
        std::copy_n(content.constData() + m_position, given, data);
        m_position += given;
        room -= given;
        return given;
    }

    qint64 writeData(const char* data, qint64 size) override
    {
        requests.push_back(size);
        const qint64 taken = std::min(size, room);
        content.append(data, int(taken));
        room -= taken;
        return taken;
    }

private:
    const bool m_sequential;
    qint64 m_position = 0;
};
