#include "Fuzz.h"

#include "Utility/FileLocks_p.h"

#include <memory>
#include <vector>

namespace {

using Fields = std::vector<std::string>;

Fields plainFields(const std::string& line, std::size_t max)
{
    Fields fields;
    std::size_t at = line.find_first_not_of(" \t\n");
    while (at != std::string::npos && fields.size() < max) {
        const std::size_t end = line.find_first_of(" \t\n:", at);
        fields.push_back(line.substr(at, end - at));
        at = end == std::string::npos ? end : line.find_first_not_of(" \t\n", end + 1);
    }
    return fields;
}

void checkFields(const std::string& line, unsigned char max)
{
    std::vector<char> buffer(line.c_str(), line.c_str() + line.size() + 1); // no byte more, so that none is read
    std::vector<char*> fields(max, buffer.data());
    const unsigned count = get_fields(buffer.data(), fields.data(), max);
    require(count <= max, "there are no more fields than are wanted");
    for (unsigned i = 0; i < max; ++i)
        require((fields[i] != nullptr) == (i < count), "the rest is null");
    require(Fields(fields.begin(), fields.begin() + count) == plainFields(line, max), "the fields are the plain ones");
    for (std::size_t i = 0; i < line.size(); ++i)
        require(buffer[i] == line[i] || (buffer[i] == '\0' && std::strchr(" \t\n:", line[i])), "only ends are cut");
}

bool plainListsWriteLock(const std::string& table, quint64 inode)
{
    constexpr std::size_t LongestPiece = 511;
    for (std::size_t at = 0, size = 0; at < table.size(); at += size) {
        const std::size_t newline = table.find('\n', at);
        size = std::min(LongestPiece, newline == std::string::npos ? table.size() - at : newline + 1 - at);
        const Fields fields = plainFields(table.substr(at, size), 10);
        if (fields.size() > 7 && fields[1] != "->" && fields[3][0] == 'W' && fields[7] == std::to_string(inode))
            return true;
    }
    return false;
}

bool listsWriteLock(std::string table, quint64 inode)
{
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(
        ::fmemopen(table.data(), table.size(), "r"), std::fclose);
    return listsWriteLock(file.get(), inode);
}

} // namespace

/// The fields of a line, and what a table lists, are those of the plain version, and a line is read to its end.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    FuzzedDataProvider input(data, size);
    const auto max = input.ConsumeIntegralInRange<unsigned char>(0, 20);
    const auto inode = input.PickValueInArray<quint64>({0, 1, 77, 2531452, ~quint64(0)});
    const std::string text =
        input.ConsumeRemainingBytesAsString().c_str(); // up to the first zero, as the reader sees it
    checkFields(text, max);
    if (text.empty())
        return 0;

    require(listsWriteLock(text, inode) == plainListsWriteLock(text, inode), "locks are those of the plain version");
    const std::string number = std::to_string(inode);
    require(listsWriteLock(text + "\n1: POSIX ADVISORY WRITE 1 fd:00:" + number + " 0 EOF", inode),
        "a lock is found after any other lines");
    return 0;
}
