#pragma once

#include <QIODevice>

#include <algorithm>
#include <limits>
#include <stdexcept>
#include <vector>

/// Returns its content in chunks of the sizes in `chunks`, cycling through them, and fails after `limit` bytes. Records
/// the requested sizes.
class ChunkedDevice : public QIODevice {
public:
    static constexpr int Failure = 700; // as the size of a chunk: reading throws
    static constexpr char FailureText[] = "the device has failed";

    explicit ChunkedDevice(OpenMode mode, bool sequential = false) : m_sequential(sequential)
    {
        open(mode | Unbuffered);
    }

    QByteArray content;
    std::vector<int> chunks; // maximum sizes in bytes; empty: no maximum
    qint64 limit = std::numeric_limits<qint64>::max();
    std::vector<qint64> requests;

    bool isSequential() const override { return m_sequential; }
    qint64 size() const override { return content.size(); }
    bool atEnd() const override { return m_position == content.size(); }
    qint64 bytesAvailable() const override { return content.size() - m_position; }

protected:
    qint64 readData(char* data, qint64 size) override
    {
        requests.push_back(size);
        const qint64 chunk = chunks.empty() ? size : chunks[requests.size() % chunks.size()];
        if (chunk == Failure)
            throw std::runtime_error(FailureText);
        if (limit == 0)
            return -1;
        const qint64 count = std::min({size, chunk, limit, content.size() - m_position});
        std::copy_n(content.constData() + m_position, count, data);
        m_position += count;
        limit -= count;
        return count;
    }

    qint64 writeData(const char* data, qint64 size) override
    {
        requests.push_back(size);
        const qint64 accepted = std::min(size, limit);
        content.append(data, int(accepted));
        limit -= accepted;
        return accepted;
    }

private:
    const bool m_sequential;
    qint64 m_position = 0;
};
