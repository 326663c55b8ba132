#include "zebapi/ZebAPI.h"

#include "platform/text.h"

CStringA Zeb_Utf8(const CStringW& text)
{
    return zeb::framework::WithMemory([&]
    {
        const std::string utf8 = zeb::platform::Utf8FromWide(text, static_cast<size_t>(text.GetLength()));
        return CStringA(utf8.data(), static_cast<int>(utf8.size()));
    });
}

bool Zeb_HasDefaultProfile()
{
    bool hasProfile = false;
    zeb::Guarded([&hasProfile] { hasProfile = !Zeb_GetMAPI().GetDefaultProfileName().IsEmpty(); });
    return hasProfile;
}

bool Zeb_HasDefaultStaticProfile()
{
    static const bool hasProfile = Zeb_HasDefaultProfile();
    return hasProfile;
}
