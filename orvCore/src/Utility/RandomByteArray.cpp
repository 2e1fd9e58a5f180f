#include <Orv/Utility/RandomByteArray.h>

#include <QScopeGuard>

#include <algorithm>
#include <array>

#include <fcntl.h>
#include <unistd.h>

namespace Orv::Utitlity {

namespace {

/// Reads `size` random bytes in portions of at most 512 and hands each one to `take(data, size)`, until that says
/// false. What read() returns is not looked at: the random device delivers what it is asked for.
template <class Take> bool readRandom(quint64 size, Take take)
{
    const int descriptor = ::open("/dev/urandom", O_RDONLY | O_CLOEXEC);
    if (descriptor == -1)
        return false;
    const auto closing = qScopeGuard([descriptor] { ::close(descriptor); });

    std::array<char, 512> buffer{};
    bool ok = true;
    while (ok && size != 0) {
        const auto chunk = static_cast<int>(std::min<quint64>(buffer.size(), size));
        const ssize_t ignored = ::read(descriptor, buffer.data(), chunk);
        Q_UNUSED(ignored)
        ok = take(buffer.data(), chunk);
        size -= chunk;
    }
    return ok;
}

} // namespace

bool RandomByteArray::generate(QByteArray& out, quint64 size)
{
    return readRandom(size, [&out](const char* data, int count) {
        out.append(data, count);
        return true;
    });
}

bool RandomByteArray::generate(QIODevice& out, quint64 size)
{
    if (!out.isWritable())
        return false;
    return readRandom(size, [&out](const char* data, int count) { return out.write(data, count) == count; });
}

} // namespace Orv::Utitlity
