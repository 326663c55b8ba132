#include "zebapi/ZebAPI.h"

bool Zeb_HasDefaultProfile()
{
    bool hasProfile = false;
    zeb::Guarded(__FILE__, __LINE__,
                 [&hasProfile] { hasProfile = !Zeb_GetMAPI().GetDefaultProfileName().IsEmpty(); });
    return hasProfile;
}

bool Zeb_HasDefaultStaticProfile()
{
    static const bool hasProfile = Zeb_HasDefaultProfile();
    return hasProfile;
}
