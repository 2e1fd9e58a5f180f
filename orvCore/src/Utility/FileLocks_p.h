#pragma once

#include <Orv/Utility/FileLocks.h>

#include <array>
#include <cstdio>
#include <cstring>
#include <string>

/// Whether a table in the form of "/proc/locks" lists a held write lock on the inode number. What does not fit into the
/// buffer is taken for further lines.
inline bool listsWriteLock(std::FILE* table, quint64 inode)
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
