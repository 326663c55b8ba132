// A program that a debugger stops in Stop: one value of each kind that the printers and the visualizer know.
#include "zebapi/ZebAPI.h"

#include <cstdlib>
#include <cstring>

namespace
{

// MAPI memory for a process that ends soon: nothing is freed.
SCODE STDMETHODCALLTYPE Allocate(ULONG size, LPVOID* block)
{
    *block = std::calloc(1, size);
    return S_OK;
}
SCODE STDMETHODCALLTYPE AllocateMore(ULONG size, LPVOID, LPVOID* block)
{
    return Allocate(size, block);
}
ULONG STDMETHODCALLTYPE Free(LPVOID)
{
    return 0;
}

} // namespace

// One binary never filled, and everything else with a content that the test knows.
struct Values
{
    CStringA narrow = "Lunch?";
    CStringW wide = ZEBW("Gr\u00FC\u00DFe aus dem langen Text");
    CStringA emptyText;
    zeb::CArray<LONG> numbers;
    zeb::CPtrArray pointers;
    zeb::CMap<DWORD, DWORD, DWORD, DWORD> map;
    zeb::CComPtr<IUnknown> noObject;
    CZebBinary noBinary;
    CZebBinary binary = CZebBinary("0A0B0C");
    CZebBinArray binaries = CZebBinArray("FFEE");
    CZebPropTagArray tags;
    CZebPropValArray properties = CZebPropValArray(9);
    CZebSortOrder order = CZebSortOrder(PR_SUBJECT_W, TABLE_SORT_ASCEND);
    CZebRestrictionAllocator restriction;
    CZebPropProblemArray problems;
    CZebRowSet rows;
    CZebRowSet noRows;
    CZebFolder folder;
    CZebTable table;
    CZebSession session;
};

void Stop(Values& values, CZebOnePropVal& view, CZebRow& row, CZebException& exception)
{
    // The debugger's breakpoint; used, so that nothing of the arguments is dropped.
    std::printf("%d %d %d %d\n", values.tags.GetCount(), view.IsEmpty(), static_cast<int>(row.Count()),
                static_cast<int>(exception.GetResult()));
}

void Fill(Values& values)
{
    values.numbers.Add(4);
    values.numbers.Add(-5);
    values.pointers.Add(nullptr);
    values.map.SetAt(7, 8);
    values.tags.Add(PR_ENTRYID, PR_SUBJECT_W, 0x80010003u, 0);
    values.properties[PR_SUBJECT_W] = ZEBW("Lunch \u20AC");
    values.properties[PR_MESSAGE_FLAGS] = ULONG(3);
    values.properties[PR_HASATTACH] = true;
    values.properties[PR_CLIENT_SUBMIT_TIME] = FILETIME{0xE7548000, 0x01DC7C43};
    zeb::CArray<CStringW> texts;
    texts.Add(ZEBW("a"));
    texts.Add(ZEBW("b"));
    values.properties[0x8002101Fu] = texts;
    values.properties[0x80031003u] = values.numbers;
    values.properties[0x80040048u] = GUID{0x20329, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
    values.properties[PR_RECORD_KEY] = values.binary;
    SPropValue missing = {};
    missing.ulPropTag = PROP_TAG(PT_ERROR, PROP_ID(PR_BODY_W));
    missing.Value.err = MAPI_E_NOT_FOUND;
    static_cast<SPropValue*>(values.properties)[8] = missing;
    values.order.Add(PR_MESSAGE_SIZE, TABLE_SORT_DESCEND);
}

void Restrict(CZebRestrictionAllocator& restriction)
{
    restriction.Allocate();
    restriction.CreateAnd(4);
    restriction[0].CreateContentW(PR_SUBJECT_W, ZEBW("lunch"), FL_SUBSTRING);
    restriction[1].CreateOr(2);
    restriction[1][0].CreateBitMask(PR_MESSAGE_FLAGS, MSGFLAG_READ, BMR_EQZ);
    restriction[1][1].CreateNot().CreateExist(PR_BODY_W);
    restriction[2].CreateProp(PR_MESSAGE_SIZE, RELOP_GT) = 1024;
    restriction[3]
        .CreateSubRestriction(PR_MESSAGE_RECIPIENTS)
        .CreateCompareProps(PR_ROWID, PR_RECIPIENT_TYPE, RELOP_NE);
}

int main()
{
    Zeb_MemInitialize(&Allocate, &AllocateMore, &Free);
    Values values;
    Fill(values);
    Restrict(values.restriction);
    *&values.problems = static_cast<SPropProblemArray*>(std::calloc(1, CbNewSPropProblemArray(1)));
    SPropProblemArray* const problems = values.problems;
    problems->cProblem = 1;
    problems->aProblem[0] = {2, PR_BODY_W, MAPI_E_COMPUTED};
    SRowSet* const rows = static_cast<SRowSet*>(std::calloc(1, CbNewSRowSet(1)));
    rows->cRows = 1;
    rows->aRow[0].cValues = 2;
    rows->aRow[0].lpProps = static_cast<SPropValue*>(values.properties);
    *&values.rows = rows;
    CZebOnePropVal view = values.properties[PR_MESSAGE_FLAGS];
    CZebRow row = values.rows[0];
    CZebException exception(MAPI_E_NOT_FOUND, nullptr, 0);
    exception.AddContext("folder 'Projects'");
    Stop(values, view, row, exception);
    std::_Exit(0); // the memory of the values is the debugger's business only
}
