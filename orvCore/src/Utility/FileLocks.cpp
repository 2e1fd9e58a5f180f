#include "Utility/FileLocks_p.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <string>
#include <sys/stat.h>

int file_wr_check_name(const char* name)
{
    if (!name)
        return -1;
    struct stat status = {};
    const int result = ::stat(name, &status);
    return result != 0 ? result : file_wr_check_ino(status.st_ino);
}

int file_wr_check_ino(quint64 ino)
{
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> table(std::fopen("/proc/locks", "re"), std::fclose);
    if (!table)
        return -2;
    return listsWriteLock(table.get(), ino) ? 1 : 0;
}

bool listsWriteLock(std::FILE* table, quint64 inode)
{
    enum Field { Class = 1, Access = 3, Inode = 7, FieldCount = 10 };
    const std::string wanted = std::to_string(inode);
    std::array<char, 512> line;
    std::array<char*, FieldCount> fields;
    while (std::fgets(line.data(), static_cast<int>(line.size()), table)) {
        if (get_fields(line.data(), fields.data(), FieldCount) <= Inode)
            continue;
        if (std::strcmp(fields[Class], "->") != 0 && *fields[Access] == 'W' && wanted == fields[Inode])
            return true;
    }
    return false;
}

unsigned get_fields(char* line, char** fields, unsigned char max)
{
    std::fill_n(fields, max, nullptr);
    unsigned count = 0;
    while (count < max) {
        line += std::strspn(line, " \t\n");
        if (*line == '\0')
            break;
        fields[count++] = line;
        line += std::strcspn(line, " \t\n:");
        if (*line != '\0')
            *line++ = '\0';
    }
    return count;
}
