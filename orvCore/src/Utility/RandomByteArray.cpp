#include <Orv/Utility/RandomByteArray.h>

#include <QScopeGuard>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>

#include <fcntl.h>
#include <unistd.h>

namespace Orv::Utitlity {

namespace {

/// Fills `buffer` completely. False if the device fails or ends early.
bool readFully(int descriptor, char* buffer, std::size_t size)
{
    while (size != 0) {
        const ssize_t received = ::read(descriptor, buffer, size);
        if (received == -1 && errno == EINTR)
            continue;
        if (received <= 0)
            return false;
        buffer += received;
        size -= static_cast<std::size_t>(received);
    }
    return true;
}

/// Reads `size` random bytes in chunks of at most 512 and passes each to `consume(data, size)`, until that returns
/// false.
template <class Consume> bool readRandom(quint64 size, Consume consume)
{
    const int descriptor = ::open("/dev/urandom", O_RDONLY | O_CLOEXEC);
    if (descriptor == -1)
        return false;
    const auto closing = qScopeGuard([descriptor] { ::close(descriptor); });

    std::array<char, 512> buffer{};
    bool ok = true;
    while (ok && size != 0) {
        const auto chunk = static_cast<int>(std::min<quint64>(buffer.size(), size));
        ok = readFully(descriptor, buffer.data(), static_cast<std::size_t>(chunk)) && consume(buffer.data(), chunk);
        size -= static_cast<quint64>(chunk);
    }
    return ok;
}

} // namespace

bool RandomByteArray::generate(QByteArray& out, quint64 size)
{
    const qsizetype before = out.size();
    const bool ok = readRandom(size, [&out](const char* data, int count) {
        out.append(data, count);
        return true;
    });
    if (!ok)
        out.truncate(before);
    return ok;
}

bool RandomByteArray::generate(QIODevice& out, quint64 size)
{
    if (!out.isWritable())
        return false;
    return readRandom(size, [&out](const char* data, int count) { return out.write(data, count) == count; });
}

} // namespace Orv::Utitlity
