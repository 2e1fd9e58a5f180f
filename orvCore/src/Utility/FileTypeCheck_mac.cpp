#include "Utility/FileTypeCheck_p.h"

bool Orv::Utility::isDataless(const struct stat& status)
{
    return (status.st_flags & SF_DATALESS) != 0;
}
