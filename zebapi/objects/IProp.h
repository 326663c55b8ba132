// The base of all property objects.
#pragma once

#include "framework/CString.h"
#include "framework/ComPtr.h"
#include "platform/export.h"
#include "platform/mapi.h"
#include "platform/overloads.h"
#include "zebapi/objects/NAMEID.h"
#include "zebapi/values/Binary.h"

class CZebPropValArray;
class CZebSession;

/// Base of every wrapper of a MAPI property object: stores, folders, messages, address books and their entries.
///
/// Holds one counted reference on an IMAPIProp (none: the wrapper is empty), whether the object belongs to
/// the Windows Address Book, and the object's tags of the library's named properties, resolved when first
/// needed. Copying or assigning a wrapper shares the MAPI object.
///
/// A failing MAPI result is thrown as CZebException* with the object's extended error; warnings pass. Using an empty
/// wrapper throws _com_error with E_POINTER without a MAPI call. Data that MAPI returns through a pointer argument
/// (SPropTagArray, SPropValue, SPropProblemArray) belongs to the caller, who frees it with Zeb_MemFree or hands it to
/// CZebPropTagArray, CZebPropValArray, CZebPropProblemArray by their operator&. Threads: none of its own; use one
/// object from one thread at a time.
class ZEBAPI_EXPORT CZebIProp
{
    friend class CZebAPI;

protected:
    /// Fills the tags map once, by IMAPIProp::GetIDsFromNames with MAPI_CREATE over the library's list. An
    /// object that refuses (MAPI_E_NO_SUPPORT, E_ACCESSDENIED, 26) gets the single entry 0 to 0, so it is not queried
    /// again.
    virtual void CheckIDsMap();

    ZEB_OVERLOADS(
    public:
        /// Copies the WAB marking of other.
        virtual void SetWAB(CZebIProp& other),

    protected:
        /// Sets whether the object belongs to the Windows Address Book.
        virtual void SetWAB(bool isWAB));

public:
    /// Releases the object.
    virtual ~CZebIProp();
    /// The interface that an open requests; each derived class returns its own. Static storage.
    virtual const GUID* GetInterfaceCIID();
    /// The MAPI_* object type of the class; 0 for no particular one.
    virtual ULONG GetMAPIType();
    /// Whether an object of this MAPI_* type may be opened into this wrapper: any when GetMAPIType is 0, else
    /// the type equal to it.
    virtual bool IsMAPITypeAcceptable(unsigned int type);
    /// PR_OBJECT_TYPE of the object.
    /// @throws CZebException* MAPI_E_INVALID_TYPE when the object has none
    virtual ULONG GetObjectType() const;
    /// Whether the object belongs to the Windows Address Book.
    virtual bool IsWAB();
    /// Shares the object of other and takes its WAB marking. Never throws: an empty other leaves this one
    /// empty, with one logged exception line.
    virtual CZebIProp& operator=(const CZebIProp& other);
    /// Frees, then returns the address of the empty pointer: a MAPI call stores an interface derived from IMAPIProp
    /// there, and this object owns its reference.
    virtual IUnknown** operator&();
    /// This object.
    virtual operator CZebIProp*();
    /// This object.
    virtual operator const CZebIProp*() const;
    /// Releases the object, clears the WAB marking and empties the tags map. Never throws.
    virtual void Free();
    /// Whether an object is held.
    virtual bool IsValid() const;
    /// The map of named properties, filled. The reference is valid for the lifetime of this object.
    virtual CZebNameIdMap& GetTagsMap();
    /// The object's own tag for a symbolic one; a tag with an id below 0x8000 is returned unchanged, without a query.
    /// @param flag whether an unknown tag throws MAPI_E_BAD_VALUE; otherwise the result is 0
    virtual ULONG GetRealTag(ULONG tag, bool flag);
    /// CZebNameIdMap::GetName on the filled map; a tag with an id below 0x8000 is returned unchanged.
    virtual ULONG GetNameFromTag(ULONG tag, bool flag);
    /// PR_ENTRYID.
    virtual CZebBinary GetEntryID();
    /// PR_PARENT_ENTRYID.
    virtual CZebBinary GetParentID();
    /// The display name in 8-bit text; empty when the object has none.
    virtual zeb::CStringA GetDisplayNameA();
    /// The display name in 16-bit text; empty when the object has none.
    virtual zeb::CStringW GetDisplayNameW();
    /// As GetDisplayNameA.
    virtual zeb::CStringA GetDisplayName();
    /// Writes the display name and saves the object.
    virtual void SetDisplayNameA(const char* name);
    /// Writes the display name and saves the object.
    virtual void SetDisplayNameW(const WCHAR* name);
    /// As SetDisplayNameA.
    virtual void SetDisplayName(const char* name);
    /// PR_DISPLAY_NAME_W when unicode, else PR_DISPLAY_NAME_A.
    virtual ULONG GetDisplayNameTag(bool unicode) const;
    /// A text property; empty when the object has none. Text of the other width is converted.
    /// @throws CZebException* MAPI_E_INVALID_TYPE when the value is not a text
    virtual zeb::CStringA GetStringPropA(ULONG tag);
    /// A text property; empty when the object has none. Text of the other width is converted.
    /// @throws CZebException* MAPI_E_INVALID_TYPE when the value is not a text
    virtual zeb::CStringW GetStringPropW(ULONG tag);
    /// As GetStringPropA.
    virtual zeb::CStringA GetStringProp(ULONG tag);
    /// IMAPIProp::OpenProperty for IID_IStream: read and write when flags has MAPI_MODIFY, else read only.
    virtual zeb::CComPtr<IStream> OpenProperty(ULONG tag, ULONG flags);
    /// The complete text of a property that is too long for GetProps, read through its stream and not converted: the
    /// tag's type must be PT_STRING8. A text ends at its first zero.
    /// @throws CZebException* MAPI_E_NOT_ENOUGH_MEMORY when the text does not fit a string
    virtual zeb::CStringA GetLongStringA(ULONG tag);
    /// The same for a tag of type PT_UNICODE.
    virtual zeb::CStringW GetLongStringW(ULONG tag);
    /// As GetLongStringA.
    virtual zeb::CStringA GetLongString(ULONG tag);
    /// IMAPIProp::GetPropList.
    virtual void GetPropList(SPropTagArray** out, ULONG flags);
    /// Every property of the object. flags go to GetPropList only; when the object does not support that code page
    /// (MAPI_E_UNKNOWN_CPID), all properties are requested without a list.
    virtual void GetAllProps(ULONG* count, SPropValue** values, ULONG flags);
    ZEB_OVERLOADS(
        /// Reads exactly n properties, given as n tags (ULONG each), into result.
        virtual void GetProps(CZebPropValArray& result, ULONG n, ...),
        /// IMAPIProp::GetProps; null tags request all. An empty list returns no values, without a call: MAPI refuses
        /// it.
        virtual void GetProps(SPropTagArray* tags, ULONG* count, SPropValue** values, ULONG flags));
    ZEB_OVERLOADS(
        /// Writes the array up to its first free entry; an empty array writes and saves nothing.
        /// @param save      save the object afterwards, with KEEP_OPEN_READWRITE | FORCE_SAVE
        /// @param problems  may be null
        virtual void SetProps(CZebPropValArray& values, bool save, SPropProblemArray** problems),
        /// IMAPIProp::SetProps.
        virtual void SetProps(ULONG n, SPropValue* values, SPropProblemArray** problems));
    /// IMAPIProp::DeleteProps.
    virtual void DeleteProps(SPropTagArray* tags, SPropProblemArray** problems);
    /// IMAPIProp::SaveChanges.
    virtual void SaveChanges(ULONG flags);
    /// Whether the object is in the container parentID: directly, or at any depth below it unless directOnly. False for
    /// an empty parentID, a store, an address book, a root folder, and for a cyclic chain of parents. Every parent is
    /// opened through session. @throws CZebException* MAPI_E_INVALID_TYPE when a parent has no PR_PARENT_ENTRYID
    virtual bool IsChildOf(CZebSession& session, const SBinary& parentID, bool directOnly);
    /// Logs every property of the object, one line each, at level 3: name, type, value. Values are written unredacted,
    /// including addresses and bodies. Never throws.
    virtual void DumpAllProps();

    /// Adds a reference on prop, which may be null.
    explicit CZebIProp(IMAPIProp* prop = nullptr);
    /// Shares the object of other.
    CZebIProp(const CZebIProp& other);
    /// One binary property.
    /// @throws CZebException* MAPI_E_INVALID_TYPE when the object has none
    CZebBinary GetBin(ULONG tag);
    /// As GetBin.
    CZebBinary GetBinary(ULONG tag) const;
    /// A reference of the caller's own on the wrapped interface, for what the wrappers do not offer: query it for the
    /// interface wanted. Empty when the wrapper is; using it raises _com_error with E_POINTER then.
    zeb::CComPtr<IMAPIProp> GetInterface() const;
    /// The object's tag for a host's own named property, of the type given: a tag as SetProps, GetProps and a table of
    /// the object's store take it. Other stores have other tags. (IMAPIProp::GetIDsFromNames)
    /// @param set     the property set, PS_PUBLIC_STRINGS or one of the host's own
    /// @param type    PT_UNICODE, PT_LONG, ...
    /// @param create  whether the store is to give a tag to a name that it does not know
    /// @return 0 for a name without a tag
    /// @throws CZebException* also MAPI_E_NOT_FOUND when create is given and the object gives no tag
    ULONG GetNamedTag(const GUID& set, LONG id, ULONG type, bool create = true);
    /// The same for a property that is named by text.
    /// @throws CZebException* also MAPI_E_INVALID_PARAMETER for a null or empty name
    ULONG GetNamedTag(const GUID& set, const WCHAR* name, ULONG type, bool create = true);
    /// The name of the named property with this tag. (IMAPIProp::GetNamesFromIDs)
    /// @param id    receives the number; 0 for a property that is named by text
    /// @param name  receives the text; empty for a property that is named by a number
    /// @return false, with the outputs as they were, for a tag without a name
    bool GetNameOfTag(ULONG tag, GUID& set, LONG& id, zeb::CStringW& name);
    /// IMAPIProp::GetIDsFromNames for several names: *tags receives one tag each, of type PT_UNSPECIFIED, or PT_ERROR
    /// for a name without one.
    /// @param flags  MAPI_CREATE or 0
    void GetIDsFromNames(ULONG count, MAPINAMEID** names, ULONG flags, SPropTagArray** tags);
    /// IMAPIProp::GetNamesFromIDs: *names receives an array of *count pointers, null for a tag without a name, in one
    /// buffer that the caller frees with Zeb_MemFree.
    /// @param tags   *tags names the tags; null asks for all names, and *tags then receives their tags
    /// @param set    only names of this property set; may be null
    void GetNamesFromIDs(SPropTagArray** tags, GUID* set, ULONG flags, ULONG* count, MAPINAMEID*** names);

protected:
    /// The wrapped interface, borrowed; throws _com_error with E_POINTER when the wrapper is empty.
    IMAPIProp* Prop() const;
    /// Sets on `target`, which was opened from this object and may be this object, the marking that this object had
    /// before.
    void PassWAB(bool wasWAB, CZebIProp& target);
    /// Queries the object for another of its interfaces.
    /// @throws _com_error E_POINTER when the wrapper is empty, E_NOINTERFACE when the object refuses
    template <class Interface>
    zeb::CComPtr<Interface> QueryFor(const IID& iid) const
    {
        zeb::CComPtr<Interface> result;
        if (FAILED(m_object.QueryInterface(iid, result)) || !result)
        {
            zeb::RaiseComError(E_NOINTERFACE);
        }
        return result;
    }

private:
    ULONG TagOfName(MAPINAMEID& name, ULONG type, bool create);
    HRESULT _HrGetOneProp_(IMAPIProp* prop, ULONG tag, SPropValue** value) const;
    bool MayHaveParent();

    bool m_bWAB = false;
    // Stored as IUnknown, so its address can be passed as IUnknown** without a cast.
    zeb::CComPtr<IUnknown> m_object;
    CZebNameIdMap m_tags;
};
