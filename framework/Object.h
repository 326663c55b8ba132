// Run-time class records and the base of the classes that carry one.
#pragma once

#include <cstring>
#include <type_traits>

namespace zeb
{

class CArchive; // nothing is serialised: only Serialize's slot needs the name

/// The record of a dynamic class: its name, its size and its base.
///
/// Header-only classes have one record in each binary that uses them, so records are compared by content, not by
/// address.
struct CRuntimeClass
{
    /// The class's name; static storage.
    const char* m_lpszClassName;
    int m_nObjectSize;                     ///< in bytes
    CRuntimeClass* (*m_pfnGetBaseClass)(); ///< null for the root

    /// Whether both records are of one class.
    bool IsSameClass(const CRuntimeClass* other) const
    {
        return this == other || (other != nullptr && m_nObjectSize == other->m_nObjectSize &&
                                 std::strcmp(m_lpszClassName, other->m_lpszClassName) == 0);
    }

    /// Whether this class is `base` or derives from it directly or indirectly.
    bool IsDerivedFrom(const CRuntimeClass* base) const
    {
        for (const CRuntimeClass* step = this; step != nullptr;
             step = step->m_pfnGetBaseClass != nullptr ? step->m_pfnGetBaseClass() : nullptr)
        {
            if (step->IsSameClass(base))
            {
                return true;
            }
        }
        return false;
    }
};

/// In a class's body: gives it a run-time class record. The members belong to the class, so an exported class exports
/// them.
#define ZEB_DECLARE_DYNAMIC(class_name)                                                                                \
public:                                                                                                                \
    static ::zeb::CRuntimeClass class##class_name;                                                                     \
    static ::zeb::CRuntimeClass* GetThisClass();                                                                       \
    ::zeb::CRuntimeClass* GetRuntimeClass() const override;

/// In one source file: defines what ZEB_DECLARE_DYNAMIC declared.
#define ZEB_IMPLEMENT_DYNAMIC(class_name, base_class_name)                                                             \
    ::zeb::CRuntimeClass class_name::class##class_name = {#class_name, static_cast<int>(sizeof(class_name)),           \
                                                          &base_class_name::GetThisClass};                             \
    ::zeb::CRuntimeClass* class_name::GetThisClass()                                                                   \
    {                                                                                                                  \
        return &class_name::class##class_name;                                                                         \
    }                                                                                                                  \
    ::zeb::CRuntimeClass* class_name::GetRuntimeClass() const                                                          \
    {                                                                                                                  \
        return &class_name::class##class_name;                                                                         \
    }

/// The record of a class.
#define ZEB_RUNTIME_CLASS(class_name) (class_name::GetThisClass())

/// The target of Dump: any stream with << for text, such as std::ostream. Borrows the stream.
class CDumpContext
{
public:
    /// Writes to stream, which must outlive this object.
    template <class Stream, class = std::enable_if_t<!std::is_const_v<Stream>>>
    CDumpContext(Stream& stream)
        : m_stream(&stream)
        , m_write([](void* to, const char* text) { *static_cast<Stream*>(to) << text; })
    {
    }
    /// Writes to the same stream.
    CDumpContext(const CDumpContext&) = default;
    /// Writes to the same stream.
    CDumpContext(CDumpContext& other)
        : CDumpContext(static_cast<const CDumpContext&>(other))
    {
    }

    /// Writes a text.
    const CDumpContext& operator<<(const char* text) const
    {
        m_write(m_stream, text);
        return *this;
    }

private:
    void* m_stream;
    void (*m_write)(void* stream, const char* text);
};

/// The root of the dynamic classes. Not copyable.
class CObject
{
public:
    /// The class's record.
    static CRuntimeClass* GetThisClass()
    {
        static CRuntimeClass record = {"CObject", static_cast<int>(sizeof(CObject)), nullptr};
        return &record;
    }

    /// The record of the object's class.
    virtual CRuntimeClass* GetRuntimeClass() const { return GetThisClass(); }
    virtual ~CObject() = default;

    /// Does nothing: no class of the library is archived.
    virtual void Serialize(CArchive&) {}
    /// Nothing to check in the root.
    virtual void AssertValid() const {}
    /// Writes the class's name; derived classes add their content.
    virtual void Dump(const CDumpContext& out) const { out << GetRuntimeClass()->m_lpszClassName; }

    /// Whether the object's class is `wanted` or derives from it.
    bool IsKindOf(const CRuntimeClass* wanted) const { return GetRuntimeClass()->IsDerivedFrom(wanted); }

    CObject(const CObject&) = delete;
    CObject& operator=(const CObject&) = delete;

protected:
    CObject() = default;
};

} // namespace zeb

#ifndef ZEBAPI_NO_FRAMEWORK_NAMES
using zeb::CArchive;
using zeb::CDumpContext;
using zeb::CObject;
using zeb::CRuntimeClass;
/// As ZEB_DECLARE_DYNAMIC.
#define DECLARE_DYNAMIC(class_name) ZEB_DECLARE_DYNAMIC(class_name)
/// As ZEB_IMPLEMENT_DYNAMIC.
#define IMPLEMENT_DYNAMIC(class_name, base_class_name) ZEB_IMPLEMENT_DYNAMIC(class_name, base_class_name)
/// As ZEB_RUNTIME_CLASS.
#define RUNTIME_CLASS(class_name) ZEB_RUNTIME_CLASS(class_name)
#endif
