#include "Utility/FileTypeCheck_p.h"

bool Orv::Utility::isDataless(const struct stat&)
{
    return false;
}
