// What the scanned operations are called on: a wrapper of each class over
// doubles, with something of everything in them.
#pragma once

#include "Scan.h"
#include "platform/tags.h"
#include "tests/support/LogCapture.h"
#include "tests/support/doubles/ByteStream.h"
#include "tests/support/doubles/MapiUtilities.h"
#include "tests/support/doubles/RecordingContainers.h"
#include "tests/support/doubles/RecordingProfAdmin.h"
#include "tests/support/doubles/RecordingStore.h"
#include "tests/support/doubles/RowTable.h"
#include "tests/support/providers/WabObject.h"
#include "zebapi/ZebAPI.h"

#include <cstring>
#include <vector>

namespace zeb::test
{

/// A table that also gives bookmarks and its position.
class ScanTable : public RowTable
{
public:
    using RowTable::RowTable;

    HRESULT STDMETHODCALLTYPE QueryPosition(ULONG* row, ULONG*, ULONG*) override
    {
        const ProviderScope inside;
        *row = 1;
        return Called("QueryPosition", "");
    }
    HRESULT STDMETHODCALLTYPE CreateBookmark(BOOKMARK* bookmark) override
    {
        const ProviderScope inside;
        *bookmark = static_cast<BOOKMARK>(0x100000003); // beyond 32 bits
        return Called("CreateBookmark", "");
    }
    HRESULT STDMETHODCALLTYPE FreeBookmark(BOOKMARK) override
    {
        const ProviderScope inside;
        return Called("FreeBookmark", "");
    }
};

/// Hosts derive from the library's classes; these let the scan call what a derived class may call.
template <class Base>
struct Open : Base
{
    using Base::Base;
    using Base::operator=;
};
struct OpenProp : Open<CZebIProp>
{
    using CZebIProp::CheckIDsMap;
    using CZebIProp::PassWAB;
    using CZebIProp::Prop;
    using CZebIProp::SetWAB;
    using Open::Open;
};
struct OpenStore : Open<CZebMsgStore>
{
    using CZebMsgStore::GetStore;
    using Open::Open;
};
struct OpenContainer : Open<CZebContainer>
{
    using CZebContainer::GetContainer;
    using Open::Open;
};
struct OpenFolder : Open<CZebFolder>
{
    using CZebFolder::GetFolder;
    using Open::Open;
};
struct OpenMessage : Open<CZebMessage>
{
    using CZebMessage::GetMessageA;
    using Open::Open;
};
struct OpenList : Open<CZebDistList>
{
    using CZebDistList::GetDistList;
    using Open::Open;
};
struct OpenBook : Open<CZebAddressBook>
{
    using CZebAddressBook::GetAddrBook;
    using CZebAddressBook::SetSession;
    using CZebAddressBook::SetWABObject;
    using Open::Open;
};
struct OpenSession : Open<CZebSession>
{
    using CZebSession::Free;
    using Open::Open;
};
struct OpenAdmin : Open<CZebProfAdmin>
{
    using CZebProfAdmin::Free;
    using Open::Open;
};
struct OpenCached : Open<CZebCachedTable>
{
    using CZebCachedTable::Bind;
    using CZebCachedTable::EmptyCache;
    using CZebCachedTable::Unbind;
    using Open::Open;
};
struct OpenValue : CZebOnePropVal
{
    using CZebOnePropVal::CheckType;
    using CZebOnePropVal::CheckValid;
    using CZebOnePropVal::CZebOnePropVal;
    using CZebOnePropVal::ValueOf;
};
struct OpenValues : CZebPropValArray
{
    using CZebPropValArray::Allocate;
    using CZebPropValArray::CZebPropValArray;
    using CZebPropValArray::FindTag;
};
struct OpenProblems : CZebPropProblemArray
{
    using CZebPropProblemArray::Allocate;
};
struct OpenTags : CZebPropTagArray
{
    using CZebPropTagArray::Allocate;
};
struct OpenBinary : CZebBinary
{
    using CZebBinary::CheckValid;
    using CZebBinary::CZebBinary;
};
struct OpenRequest : CZebEntryIDRequest
{
    using CZebEntryIDRequest::ClearEntryID;
    using CZebEntryIDRequest::PreAllocate;
};
struct OpenBinaries : CZebBinArray
{
    using CZebBinArray::CheckValid;
    using CZebBinArray::CZebBinArray;
};
struct OpenRestriction : CZebRestriction
{
    OpenRestriction() = default;
    OpenRestriction(SRestriction* node, void* base)
        : CZebRestriction(node, base)
    {
    }
    using CZebRestriction::CheckValid;
};
struct OpenOrder : CZebSortOrder
{
    using CZebSortOrder::Allocate;
    using CZebSortOrder::CZebSortOrder;
};
struct OpenRow : CZebRow
{
    using CZebRow::CheckValid;
    using CZebRow::CZebRow;
    using CZebRow::FindTag;
};
struct OpenRows : CZebRowSet
{
    using CZebRowSet::CheckValid;
};

constexpr ULONG NamedTag = 0x8083001E;

/// Its destructor frees what a call leaves allocated by design (CZebBinArray does).
struct RestFreer
{
    explicit RestFreer(MapiMemory& owner)
        : memory(owner)
    {
    }
    ~RestFreer()
    {
        if (isExpected)
        {
            memory.FreeRest();
        }
    }
    RestFreer(const RestFreer&) = delete;
    RestFreer& operator=(const RestFreer&) = delete;

    MapiMemory& memory;
    bool isExpected = false;
};

class World
{
public:
    World()
    {
        for (Bag* bag : {&prop.m_bag, &message.m_bag, &attachment.m_bag, &folder.m_bag, &child.m_bag, &store.m_bag,
                         &container.m_bag, &book.m_bag})
        {
            Fill(*bag);
        }
        FillTables();
        FillObjects();
        FillValues();
    }
    ~World()
    {
        Zeb_MemFree(m_entries);
        Zeb_MemFree(m_base);
    }
    World(const World&) = delete;
    World& operator=(const World&) = delete;

    MapiMemory* Memory() { return &memory; }
    size_t LogLines() const { return log.Lines().size(); }
    static constexpr bool TakesLong = false;
    void CleanUp() {}

    static SBinary Id(const char* text)
    {
        return {static_cast<ULONG>(std::strlen(text)), reinterpret_cast<BYTE*>(const_cast<char*>(text))};
    }
    /// A value of the tag's type, all zero, in memory that lives as long as the world. Texts are empty.
    SPropValue* NewValue(ULONG tag)
    {
        const ProviderScope inside;
        auto* value = static_cast<SPropValue*>(memory.AllocateUnder(m_base, sizeof(SPropValue)));
        std::memset(static_cast<void*>(value), 0, sizeof *value);
        value->ulPropTag = tag;
        if (PROP_TYPE(tag) == PT_STRING8 || PROP_TYPE(tag) == PT_UNICODE)
        {
            value->Value.lpszW = const_cast<WCHAR*>(ZEBW(""));
        }
        return value;
    }
    CZebOnePropVal Value(ULONG tag) { return CZebOnePropVal(NewValue(tag), m_base); }
    /// A value of two elements.
    CZebOnePropVal Two(ULONG tag)
    {
        SPropValue* const value = NewValue(tag);
        auto& content = value->Value;
        switch (PROP_TYPE(tag))
        {
        case PT_MV_STRING8:
            content.MVszA = {2, const_cast<char**>(m_texts)};
            break;
        case PT_MV_UNICODE:
            content.MVszW = {2, const_cast<WCHAR**>(m_wideTexts)};
            break;
        case PT_MV_BINARY:
            content.MVbin = {2, m_binaries};
            break;
        default:
            content.MVl = {2, m_numbers};
            break;
        }
        return CZebOnePropVal(value, m_base);
    }

    // What a provider has.
    MapiMemory memory;
    RestFreer rest{memory};
    MapiUtilities utilities;
    TableEntryPoints entryPoints;
    LogCapture log;
    Journal journal;
    RecordingStream stream{journal, "A long text, read through a stream"};
    ScanTable table{journal, "table"};
    ScanTable stores{journal, "stores"};
    ScanTable hierarchy{journal, "hierarchy"};
    ScanTable contents{journal, "contents"};
    ScanTable profiles{journal, "profiles"};
    RecordingProp prop{journal};
    RecordingMessage message{journal};
    RecordingAttachment attachment{journal};
    ByteStream bytes{journal, "The content of a file"};
    ByteStream file{journal, "Another content"};
    ScanTable parts{journal, "parts"};
    RecordingContainer container{journal};
    RecordingDistList list{journal};
    RecordingFolder folder{journal};
    RecordingFolder child{journal, "child"};
    RecordingStore store{journal};
    RecordingAddrBook book{journal};
    RecordingSession session{journal};
    RecordingProfAdmin admin{journal};
    WabObject wab;

    // The wrappers.
    OpenProp zprop{&prop};
    OpenMessage zmessage{&message};
    CZebAttachment zattachment{&attachment};
    CZebMailUser zuser{&prop};
    CZebPropObj zobject{&prop};
    OpenContainer zcontainer{&container};
    CZebABContainer zabcontainer{&container};
    CZebABItem zitem{&message};
    OpenList zlist{&list};
    OpenFolder zfolder{&folder};
    OpenFolder zchild{&child};
    OpenStore zstore{&store};
    OpenBook zbook{&book};
    OpenSession zsession{&session};
    OpenAdmin zadmin{&admin};
    CZebTable ztable{&table};
    OpenCached zcached{&table};

    // The values.
    OpenValues values;
    OpenProblems problems;
    OpenTags tags;
    OpenBinary binary{"0102030405"};
    OpenRequest request;
    OpenBinaries binaries{ULONG{2}};
    CZebRestrictionAllocator restriction;
    OpenOrder order{0, 0};
    OpenRows rows;
    CZebNameIdMap map;
    SBinaryArray ids = {1, &m_id};

private:
    static void Fill(Bag& bag)
    {
        bag.Set(PR_ENTRYID, "one");
        bag.Set(PR_PARENT_ENTRYID, "parent");
        bag.Set(PR_OBJECT_TYPE, MAPI_MESSAGE);
        bag.Set(PR_FOLDER_TYPE, FOLDER_GENERIC);
        bag.Set(PR_DISPLAY_NAME_A, "A name");
        bag.Set(PR_SUBJECT_A, "A subject");
        bag.Set(PR_IPM_WASTEBASKET_ENTRYID, "folder");
        bag.Set(PR_IPM_CONTACT_ENTRYID, "folder");
        bag.Set(PR_AB_PROVIDER_ID, "provider");
    }
    void FillTables()
    {
        for (RowTable* each : {&table, &stores, &hierarchy, &contents, &profiles, &parts})
        {
            for (LONG i = 0; i < 3; ++i)
            {
                each->m_rows.push_back({{PR_ENTRYID, 0, "one"},
                                        {PR_DISPLAY_NAME_A, 0, "QorInfo"},
                                        {PR_SUBJECT_A, 0, "QorInfo"},
                                        {PR_DEFAULT_STORE, i, ""},
                                        {PR_DEFAULT_PROFILE, i, ""}});
            }
        }
        for (RowData& row : hierarchy.m_rows)
        {
            row[0].bytes = "child";
        }
    }
    void Connect(Openable& openable)
    {
        openable.Add("one", &message, MAPI_MESSAGE);
        openable.Add("child", &child, MAPI_FOLDER);
        openable.Add("folder", &folder, MAPI_FOLDER);
        openable.Add("parent", &folder, MAPI_FOLDER);
        openable.Add("container", &container, MAPI_ABCONT);
    }
    void FillObjects()
    {
        for (Openable* openable : {&folder.m_openable, &child.m_openable, &container.m_openable, &store.m_openable,
                                   &book.m_openable, &session.m_openable})
        {
            Connect(*openable);
        }
        store.m_openable.Add("", &folder, MAPI_FOLDER);
        book.m_openable.Add("", &container, MAPI_ABCONT);
        prop.m_property = &stream;
        attachment.m_property = &bytes;
        message.m_attachment = &attachment;
        message.m_attachments = &parts;
        message.m_recipients = &parts;
        message.m_namedTags.assign(1, 0x90000000);
        message.m_namesGiven = {&m_set, MNID_ID, {7}};
        prop.m_namedTags.assign(81, 0x90000000);
        session.m_stores = &stores;
        session.m_store = &store;
        session.m_addressBook = &book;
        store.m_receiveFolder = "folder";
        book.m_defaultDir = "container";
        admin.m_table = &profiles;
        folder.m_hierarchy = &hierarchy;
        folder.m_contents = &contents;
        container.m_hierarchy = &hierarchy;
        container.m_contents = &contents;
        folder.m_message = &message;
        folder.m_created = &child;
        zbook.SetSession(&session);
    }
    void FillValues()
    {
        m_base = memory.Allocate(1);
        values[PR_SUBJECT_A] = "A subject";
        values[PR_MESSAGE_SIZE] = LONG{5};
        values[PR_ENTRYID] = Id("one");
        tags.AddOne(PR_SUBJECT_A);
        tags.AddOne(PR_ENTRYID);
        order.Add(PR_SUBJECT_A, TABLE_SORT_ASCEND);
        restriction.Allocate();
        restriction.CreateProp(PR_SUBJECT_A, RELOP_EQ) = "QorInfo";
        ztable.SeekRow(BOOKMARK_BEGINNING, 0, nullptr);
        ztable.QueryRows(&rows, 3, nullptr, nullptr);
        zcached[0];
        map.SetTag(NamedTag, 0x85120102);
        auto* two = static_cast<SPropProblemArray*>(Zeb_MemAllocate(CbNewSPropProblemArray(2), nullptr));
        two->cProblem = 2;
        *&problems = two;
        binaries.SetAt(0, Id("one"));
        binaries.SetAt(1, Id("two"));
        m_entries = binaries.operator SBinaryArray*()->lpbin;
    }
    SBinary m_id = Id("one");
    GUID m_set = {1, 2, 3, {4}};
    void* m_base = nullptr; ///< what values lie under
    /// The block of entries that an array of binaries leaves allocated, as it is meant to.
    SBinary* m_entries = nullptr;
    const char* m_texts[2] = {"one", "two"};
    const WCHAR* m_wideTexts[2] = {ZEBW("one"), ZEBW("two")};
    SBinary m_binaries[2] = {Id("one"), Id("two")};
    /// Two elements of any size up to an identifier's.
    alignas(8) LONG m_numbers[8] = {1, 2};
};

} // namespace zeb::test
