// A host with a framework of its own: its names and macros are taken before the library's header is included.
#include <cstring>
#include <string>

class CRuntimeClass
{
};
class CObject
{
public:
    virtual int OfTheHost() const { return 1; }
    virtual ~CObject() = default;
};
class CException : public CObject
{
public:
    int code = 0;
};
class CString
{
public:
    CString(const char* text)
        : m_text(text)
    {
    }
    size_t Length() const { return m_text.size(); }

private:
    std::string m_text;
};
using CStringA = CString;
template <class T>
class CStringW
{
};
template <class T>
class CArray
{
public:
    T only;
};
template <class T>
class CMap
{
};
template <class T>
class CComPtr
{
};
class CPtrArray
{
};
class CWinApp
{
};
class CCriticalSection
{
};
class CSingleLock
{
};
class CArchive
{
};
class CDumpContext
{
};
enum POSITION
{
    PositionOfTheHost = 7
};
inline int RaiseComError(const char* text)
{
    return static_cast<int>(std::strlen(text));
}
#define DECLARE_DYNAMIC(class_name) static int DynamicOfTheHost();
#define IMPLEMENT_DYNAMIC(class_name, base_class_name)                                                                 \
    int class_name::DynamicOfTheHost()                                                                                 \
    {                                                                                                                  \
        return 3;                                                                                                      \
    }
#define RUNTIME_CLASS(class_name) class_name::DynamicOfTheHost()

#define ZEBAPI_NO_FRAMEWORK_NAMES
#include "zebapi/ZebAPI.h"

#include <gtest/gtest.h>

namespace
{

class Document : public CObject
{
public:
    DECLARE_DYNAMIC(Document)
};
IMPLEMENT_DYNAMIC(Document, CObject)

TEST(OwnNames, TheHostsNamesMeanItsTypes)
{
    const CString text("of the host");
    EXPECT_EQ(text.Length(), 11u);
    EXPECT_EQ(Document().OfTheHost(), 1);
    EXPECT_EQ(RUNTIME_CLASS(Document), 3);
    EXPECT_EQ(RaiseComError("four"), 4);
    const CArray<int> array{5};
    EXPECT_EQ(array.only, 5);
    const POSITION position = PositionOfTheHost;
    EXPECT_EQ(position, 7);
}

TEST(OwnNames, LibraryTypesAreInItsNamespace)
{
    SPropValue value = {};
    value.ulPropTag = PROP_TAG(PT_LONG, 0x6001);
    value.Value.l = 1234;
    const zeb::CStringA text = CZebOnePropVal(&value, nullptr).String(false);
    EXPECT_EQ(text, "1234");
    zeb::CArray<zeb::CStringA> texts;
    texts.Add(text);
    EXPECT_EQ(texts[0], text);
    EXPECT_TRUE(zeb::CObject::GetThisClass()->m_pfnGetBaseClass == nullptr);
}

TEST(OwnNames, TheLibrarysExceptionIsItsOwn)
{
    try
    {
        CZebBinary().String();
        FAIL() << "an object without a header has no text";
    }
    catch (CException*)
    {
        FAIL() << "caught as an exception of the host";
    }
    catch (zeb::CException* exception)
    {
        EXPECT_TRUE(exception->IsKindOf(ZEB_RUNTIME_CLASS(CZebException)));
        EXPECT_STREQ(Zeb_GetExceptionDescription(exception), "MAPI_E_INVALID_OBJECT");
        exception->Delete();
    }
}

} // namespace
