#include "zebapi/ZebAPI.h"

#include "platform/text.h"

#include <cstring>

const char* Zeb_GetVersion()
{
    return ZEB_VERSION;
}

CStringA Zeb_Utf8(const CStringW& text)
{
    return zeb::framework::WithMemory([&]
    {
        const std::string utf8 = zeb::platform::Utf8FromWide(text, static_cast<size_t>(text.GetLength()));
        return CStringA(utf8.data(), static_cast<int>(utf8.size()));
    });
}

CStringW Zeb_Wide(const char* utf8)
{
    if (utf8 == nullptr)
    {
        return CStringW();
    }
    return zeb::framework::WithMemory([&]
    {
        const zeb::platform::WideString wide = zeb::platform::WideFromUtf8(utf8, std::strlen(utf8));
        return CStringW(wide.data(), static_cast<int>(wide.size()));
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
