// A table that records its calls.
#pragma once

#include "tests/support/MapiMemory.h"
#include "tests/support/doubles/Refusals.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace zeb::test
{

/// Records every call of IMAPITable, with its arguments, as one line of text in `calls`, and answers from its fields.
///
/// It lives on the stack or in its owner and counts references, which a test may read; it is never deleted by them.
/// Reference counting and GetLastError are not recorded. Rows that QueryRows returns are in MapiMemory.
class RecordingTable : public IMAPITable
{
public:
    /// The calls so far, for instance "GetRowCount(flags 0)".
    std::vector<std::string> calls;
    /// The results of methods, by name; S_OK by default. A failing method returns nothing else.
    std::map<std::string, HRESULT> results;
    /// The extended error that GetLastError returns; from MapiMemory::NewMapiError.
    MAPIERROR* lastError = nullptr;
    /// Runs inside a method, after it was recorded, by its name.
    std::map<std::string, std::function<void()>> actions;

    ULONG references = 1;
    ULONG rowCount = 0;       ///< the result of GetRowCount
    ULONG position = 0;       ///< the result of QueryPosition, and the first row that QueryRows reads
    LONG sought = 0;          ///< the result of SeekRow
    ULONG_PTR connection = 0; ///< the result of Advise
    BOOKMARK bookmark = 0;    ///< the result of CreateBookmark
    /// The rows: one text each, which QueryRows returns as PR_SUBJECT_A from `position` on.
    std::vector<std::string> subjects;
    /// QueryRows succeeds without a row set.
    bool givesNullRows = false;
    /// The advise sink of the last Advise; no reference is held.
    IMAPIAdviseSink* sink = nullptr;

    virtual ~RecordingTable() = default;

    HRESULT WINAPI QueryInterface(REFIID, void** object) override
    {
        *object = nullptr;
        return E_NOINTERFACE;
    }
    ULONG WINAPI AddRef() override { return ++references; }
    ULONG WINAPI Release() override
    {
        if (actions.count("Release") != 0)
        {
            actions["Release"]();
        }
        return --references;
    }

    HRESULT WINAPI GetLastError(HRESULT, ULONG, LPMAPIERROR* error) override
    {
        *error = lastError;
        return S_OK;
    }
    HRESULT WINAPI Advise(ULONG mask, LPMAPIADVISESINK adviseSink, ULONG_PTR* connectionOut) override
    {
        sink = adviseSink;
        *connectionOut = connection;
        return Record("Advise", Number("mask", mask), Require(mask != 0 && adviseSink != nullptr));
    }
    HRESULT WINAPI Unadvise(ULONG_PTR ended) override { return Record("Unadvise", Number("connection", ended)); }
    HRESULT WINAPI GetStatus(ULONG*, ULONG*) override { return Record("GetStatus", ""); }
    HRESULT WINAPI SetColumns(LPSPropTagArray columns, ULONG flags) override
    {
        std::string text = "no columns";
        if (columns != nullptr)
        {
            text = "columns";
            for (ULONG i = 0; i < columns->cValues; ++i)
            {
                text += " " + Hex(columns->aulPropTag[i]);
            }
        }
        return Record("SetColumns", text + ", " + Number("flags", flags),
                      FirstOf({RefuseFlags(flags, TBL_ASYNC | TBL_BATCH), RequireTags(columns)}));
    }
    HRESULT WINAPI QueryColumns(ULONG flags, LPSPropTagArray*) override
    {
        return Record("QueryColumns", Number("flags", flags));
    }
    HRESULT WINAPI GetRowCount(ULONG flags, ULONG* count) override
    {
        *count = rowCount;
        return Record("GetRowCount", Number("flags", flags));
    }
    HRESULT WINAPI SeekRow(BOOKMARK origin, LONG rows, LONG* rowsSought) override
    {
        if (rowsSought != nullptr)
        {
            *rowsSought = sought;
        }
        return Record("SeekRow", Number("origin", origin) + ", rows " + std::to_string(rows));
    }
    HRESULT WINAPI SeekRowApprox(ULONG numerator, ULONG denominator) override
    {
        return Record("SeekRowApprox", Number("numerator", numerator) + ", " + Number("denominator", denominator));
    }
    HRESULT WINAPI QueryPosition(ULONG* row, ULONG* numerator, ULONG* denominator) override
    {
        EXPECT_EQ(*row + *numerator + *denominator, 0u) << "cleared before the call";
        *row = position;
        return Record("QueryPosition", "");
    }
    HRESULT WINAPI FindRow(LPSRestriction restriction, BOOKMARK origin, ULONG flags) override
    {
        return Record("FindRow", Pointer(restriction) + ", " + Number("origin", origin) + ", " + Number("flags", flags),
                      FirstOf({RefuseFlags(flags, DIR_BACKWARD), Require(restriction != nullptr)}));
    }
    HRESULT WINAPI Restrict(LPSRestriction restriction, ULONG flags) override
    {
        return Record("Restrict", Pointer(restriction) + ", " + Number("flags", flags),
                      RefuseFlags(flags, TBL_ASYNC | TBL_BATCH));
    }
    HRESULT WINAPI CreateBookmark(BOOKMARK* made) override
    {
        EXPECT_EQ(*made, 0u) << "cleared before the call";
        *made = bookmark;
        return Record("CreateBookmark", "");
    }
    HRESULT WINAPI FreeBookmark(BOOKMARK freed) override { return Record("FreeBookmark", Number("bookmark", freed)); }
    HRESULT WINAPI SortTable(LPSSortOrderSet order, ULONG flags) override
    {
        return Record("SortTable", Pointer(order) + ", " + Number("flags", flags),
                      FirstOf({RefuseFlags(flags, TBL_ASYNC | TBL_BATCH), Require(order != nullptr)}));
    }
    HRESULT WINAPI QuerySortOrder(LPSSortOrderSet*) override { return Record("QuerySortOrder", ""); }
    HRESULT WINAPI QueryRows(LONG count, ULONG flags, LPSRowSet* rows) override
    {
        const HRESULT result = Record("QueryRows", "rows " + std::to_string(count) + ", " + Number("flags", flags),
                                      FirstOf({RefuseFlags(flags, TBL_NOADVANCE), Require(rows != nullptr)}));
        if (SUCCEEDED(result))
        {
            *rows = givesNullRows ? nullptr : Rows(count);
        }
        return result;
    }
    HRESULT WINAPI Abort() override { return Record("Abort", ""); }
    HRESULT WINAPI ExpandRow(ULONG, LPBYTE, ULONG, ULONG, LPSRowSet*, ULONG*) override
    {
        return Record("ExpandRow", "");
    }
    HRESULT WINAPI CollapseRow(ULONG, LPBYTE, ULONG, ULONG*) override { return Record("CollapseRow", ""); }
    HRESULT WINAPI WaitForCompletion(ULONG, ULONG, ULONG*) override { return Record("WaitForCompletion", ""); }
    HRESULT WINAPI GetCollapseState(ULONG, ULONG, LPBYTE, ULONG*, LPBYTE*) override
    {
        return Record("GetCollapseState", "");
    }
    HRESULT WINAPI SetCollapseState(ULONG, ULONG, LPBYTE, BOOKMARK*) override { return Record("SetCollapseState", ""); }

    /// A pointer as shown in the recorded calls.
    static std::string Pointer(const void* pointer)
    {
        char text[32];
        std::snprintf(text, sizeof text, "%p", pointer);
        return pointer == nullptr ? "null" : text;
    }

protected:
    /// Records the call, runs its action and returns the test's result for it, or `otherwise`.
    HRESULT Record(const std::string& method, const std::string& arguments, HRESULT otherwise = S_OK)
    {
        calls.push_back(method + "(" + arguments + ")");
        const auto action = actions.find(method);
        if (action != actions.end())
        {
            action->second();
        }
        const auto result = results.find(method);
        return result == results.end() ? otherwise : result->second;
    }

    /// At most `count` rows from the position, which is advanced.
    virtual SRowSet* Rows(LONG count)
    {
        const ULONG left = position < subjects.size() ? static_cast<ULONG>(subjects.size()) - position : 0;
        const ULONG given = count < 0 ? 0 : std::min(left, static_cast<ULONG>(count));
        void* block = nullptr;
        EXPECT_EQ(MapiMemory::AllocateBuffer(static_cast<ULONG>(CbNewSRowSet(given)), &block), S_OK);
        auto* rows = static_cast<SRowSet*>(block);
        rows->cRows = given;
        for (ULONG i = 0; i < given; ++i)
        {
            rows->aRow[i] = Row(subjects[position++]);
        }
        return rows;
    }

private:
    static SRow Row(const std::string& subject)
    {
        void* block = nullptr;
        EXPECT_EQ(MapiMemory::AllocateBuffer(sizeof(SPropValue), &block), S_OK);
        auto* values = static_cast<SPropValue*>(block);
        void* text = nullptr;
        EXPECT_EQ(MapiMemory::AllocateMore(static_cast<ULONG>(subject.size()) + 1, values, &text), S_OK);
        std::memcpy(text, subject.c_str(), subject.size() + 1);
        *values = {};
        values->ulPropTag = PR_SUBJECT_A;
        values->Value.lpszA = static_cast<char*>(text);
        return {0, 1, values};
    }
    static std::string Hex(ULONG number)
    {
        char text[16];
        std::snprintf(text, sizeof text, "0x%08X", static_cast<unsigned>(number));
        return text;
    }
    static std::string Number(const char* name, ULONG_PTR number)
    {
        return std::string(name) + " " + std::to_string(number);
    }
};

} // namespace zeb::test
