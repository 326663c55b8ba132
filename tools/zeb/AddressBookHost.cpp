#include "tools/zeb/AddressBookHost.h"

#include "tools/common/Failure.h"
#include "tools/common/Output.h"
#include "tools/zeb/Objects.h"

#include <algorithm>

namespace zeb::tools
{
namespace
{

/// Rows per call: few calls without holding the whole address book in memory.
constexpr LONG RowsInOneCall = 200;

std::unique_ptr<HostSession> SessionOf(const std::string& profile, bool wab)
{
    if (!wab)
    {
        return std::make_unique<HostSession>(profile);
    }
    if (!profile.empty())
    {
        throw ToolError("the Windows Address Book has no profiles: --wab and --profile exclude each other");
    }
    try
    {
        Zeb_GetMAPI().Initialize(true);
    }
    catch (...)
    {
        const ToolError failure =
            CurrentError("no usable Windows Address Book ('zeb provider install --wab' registers one): ");
        Zeb_GetMAPI().Uninitialize(nullptr);
        throw failure;
    }
    return nullptr;
}

AddressRow RowOf(const CZebRow& cells)
{
    AddressRow row;
    row.name = TextOf(cells, PR_DISPLAY_NAME_W);
    row.addressType = TextOf(cells, PR_ADDRTYPE_W);
    row.address = TextOf(cells, PR_EMAIL_ADDRESS_W);
    row.objectType = NumberOf(cells, PR_OBJECT_TYPE);
    row.displayType = NumberOf(cells, PR_DISPLAY_TYPE);
    if (cells.hasRealValue(PR_ENTRYID))
    {
        row.entryId = static_cast<const char*>(cells[PR_ENTRYID].String(false));
    }
    return row;
}

/// Rows that a table returned, freed one by one: the library has no FreeProws in WAB mode.
class ReadSet
{
public:
    ~ReadSet()
    {
        for (ULONG i = 0; m_rows != nullptr && i < m_rows->cRows; ++i)
        {
            Zeb_MemFree(m_rows->aRow[i].lpProps);
        }
        if (m_rows != nullptr)
        {
            Zeb_MemFree(m_rows);
        }
    }
    ReadSet() = default;
    ReadSet(const ReadSet&) = delete;
    ReadSet& operator=(const ReadSet&) = delete;

    SRowSet** Place() { return &m_rows; }
    ULONG Count() const { return m_rows != nullptr ? m_rows->cRows : 0; }
    CZebRow At(ULONG index) const { return {&m_rows->aRow[index], m_rows}; }

private:
    SRowSet* m_rows = nullptr;
};

std::string Lower(const std::string& text)
{
    std::string lower = text;
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](unsigned char each) { return static_cast<char>(std::tolower(each)); });
    return lower;
}

} // namespace

bool IsEntryId(const std::string& text)
{
    return LooksLikeEntryId(text) && text.size() % 2 == 0;
}

AddressBookHost::AddressBookHost(const std::string& profile, bool wab)
    : m_wab(wab)
    , m_session(SessionOf(profile, wab))
    , m_book(nullptr)
{
    m_book = wab ? Zeb_GetMAPI().GetWABAddressBook(false) : m_session->Session().OpenAddressBook(nullptr, AB_NO_DIALOG);
}

AddressBookHost::~AddressBookHost()
{
    m_book.Free();
    if (m_wab)
    {
        Zeb_GetMAPI().Uninitialize(nullptr);
    }
}

void AddressBookHost::ReadRows(CZebTable& table, const std::function<bool(const AddressRow&)>& visit) const
{
    table.SetColumns(6, PR_DISPLAY_NAME_W, PR_ADDRTYPE_W, PR_EMAIL_ADDRESS_W, PR_OBJECT_TYPE, PR_DISPLAY_TYPE,
                     PR_ENTRYID);
    for (;;)
    {
        ReadSet rows;
        table.QueryRows(rows.Place(), RowsInOneCall, nullptr, nullptr);
        if (rows.Count() == 0)
        {
            return;
        }
        for (ULONG i = 0; i < rows.Count(); ++i)
        {
            if (!visit(RowOf(rows.At(i))))
            {
                return;
            }
        }
    }
}

std::vector<AddressRow> AddressBookHost::Containers()
{
    CZebABContainer root = m_book.OpenRootContainer(MAPI_BEST_ACCESS);
    CZebTable table = root.GetHierarchyTable(MAPI_UNICODE | CONVENIENT_DEPTH);
    std::vector<AddressRow> found;
    ReadRows(table, [&](const AddressRow& row)
    {
        found.push_back(row);
        return true;
    });
    return found;
}

AddressRow AddressBookHost::FindContainer(const std::string& nameOrId)
{
    for (const AddressRow& each : Containers())
    {
        if (Lower(each.name) == Lower(nameOrId) || Lower(each.entryId) == Lower(nameOrId))
        {
            return each;
        }
    }
    if (!IsEntryId(nameOrId))
    {
        throw ToolError("the address book has no container '" + nameOrId + "'; 'zeb ab list' lists the containers");
    }
    AddressRow row;
    row.entryId = nameOrId;
    row.name = nameOrId;
    return row;
}

CZebABContainer AddressBookHost::OpenContainer(const std::string& entryId)
{
    CZebABContainer container;
    m_book.OpenEntry(CZebBinary(entryId.c_str()), container, MAPI_BEST_ACCESS);
    return container;
}

std::vector<AddressRow> AddressBookHost::Matching(const std::string& name)
{
    const CStringW wide = WideFromUtf8(name);
    SPropValue value{};
    value.ulPropTag = PR_ANR_W;
    value.Value.lpszW = const_cast<WCHAR*>(static_cast<const WCHAR*>(wide));
    SRestriction restriction{};
    restriction.rt = RES_PROPERTY;
    restriction.res.resProperty = {RELOP_EQ, PR_ANR_W, &value};
    std::vector<AddressRow> found;
    for (const AddressRow& each : Containers())
    {
        CZebABContainer container = OpenContainer(each.entryId);
        CZebTable table = container.GetContentsTable(MAPI_UNICODE);
        table.Restrict(&restriction, 0);
        ReadRows(table, [&](const AddressRow& row)
        {
            found.push_back(row);
            return true;
        });
    }
    return found;
}

std::string AddressBookHost::FindEntry(const std::string& nameOrId)
{
    if (IsEntryId(nameOrId))
    {
        return nameOrId;
    }
    std::vector<AddressRow> found = Matching("=" + nameOrId);
    if (found.empty())
    {
        found = Matching(nameOrId);
    }
    if (found.empty())
    {
        throw ToolError("the address book has no entry '" + nameOrId + "'");
    }
    if (found.size() > 1)
    {
        throw ToolError(
            "'" + nameOrId + "' is ambiguous: " + std::to_string(found.size()) +
            " entries of the address book match; give the entry identifier ('zeb ab list --json' shows it)");
    }
    return found.front().entryId;
}

} // namespace zeb::tools
