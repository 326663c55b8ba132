// Run-time class records and the base of the classes that carry one.
#pragma once

#include <cstring>
#include <ostream>

class CArchive; // nothing is serialised: the name only keeps Serialize's place

/// The record of a dynamic class: its name, its size and its base.
///
/// Header-only classes have one record in each binary that uses them, so records are told apart by what they
/// say, not by their address.
struct CRuntimeClass
{
    const char* m_lpszClassName;
    int m_nObjectSize;                     ///< in bytes
    CRuntimeClass* (*m_pfnGetBaseClass)(); ///< null for the root

    bool IsSameClass(const CRuntimeClass* other) const
    {
        return this == other || (other != nullptr && m_nObjectSize == other->m_nObjectSize &&
                                 std::strcmp(m_lpszClassName, other->m_lpszClassName) == 0);
    }

    /// Whether this is `base` or derives from it, however far.
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

/// In a class's body: gives it a run-time class record. The members are of the class, so that an exported
/// class exports them.
#define DECLARE_DYNAMIC(class_name)                                                                          \
public:                                                                                                      \
    static CRuntimeClass class##class_name;                                                                  \
    static CRuntimeClass* GetThisClass();                                                                    \
    CRuntimeClass* GetRuntimeClass() const override;

/// In one source file: defines what DECLARE_DYNAMIC declared.
#define IMPLEMENT_DYNAMIC(class_name, base_class_name)                                                       \
    CRuntimeClass class_name::class##class_name = {#class_name, static_cast<int>(sizeof(class_name)),        \
                                                   &base_class_name::GetThisClass};                          \
    CRuntimeClass* class_name::GetThisClass()                                                                \
    {                                                                                                        \
        return &class_name::class##class_name;                                                               \
    }                                                                                                        \
    CRuntimeClass* class_name::GetRuntimeClass() const                                                       \
    {                                                                                                        \
        return &class_name::class##class_name;                                                               \
    }

#define RUNTIME_CLASS(class_name) (class_name::GetThisClass())

/// The root of the dynamic classes. Not copyable.
class CObject
{
public:
    static CRuntimeClass* GetThisClass()
    {
        static CRuntimeClass record = {"CObject", static_cast<int>(sizeof(CObject)), nullptr};
        return &record;
    }

    virtual CRuntimeClass* GetRuntimeClass() const { return GetThisClass(); }
    virtual ~CObject() = default;

    /// Writes nothing: no class of the library is kept in an archive.
    virtual void Serialize(CArchive&) {}
    /// Nothing to check in the root.
    virtual void AssertValid() const {}
    /// Writes the class's name; derived classes add what they hold.
    virtual void Dump(std::ostream& out) const { out << GetRuntimeClass()->m_lpszClassName; }

    bool IsKindOf(const CRuntimeClass* wanted) const { return GetRuntimeClass()->IsDerivedFrom(wanted); }

    CObject(const CObject&) = delete;
    CObject& operator=(const CObject&) = delete;

protected:
    CObject() = default;
};
