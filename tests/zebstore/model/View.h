// Open tables, and what they must show.
#pragma once

#include "tests/zebstore/model/MailWriter.h"
#include "tests/zebstore/storage/TableCopy.h"

#include <map>

namespace zebstore::model
{

/// Applies a table's notifications to a copy of its rows. Threads: any.
class MirrorSink final : public Object<IMAPIAdviseSink>
{
public:
    ULONG STDMETHODCALLTYPE OnNotify(ULONG count, LPNOTIFICATION notifications) override;

    void Start(test::CopiedRows rows);
    test::CopiedRows Rows();
    /// The first thing that was wrong with a notification since Start; empty for nothing.
    std::string Fault();
    /// The events since Start.
    std::vector<ULONG> Events();
    /// Waits until there were so many events. @return false after ten seconds
    bool Receives(size_t count);

private:
    bool Answers(REFIID iid) const override { return IsOneOf(iid, {&IID_IMAPIAdviseSink}); }

    std::mutex m_lock;
    std::condition_variable m_heard;
    test::RowCopy m_copy;
    std::string m_fault;
};

/// A row as the model has it.
struct ModelRow
{
    std::string key;
    std::string state; ///< another one after each change
    Item item;
};
using ModelRows = std::vector<ModelRow>;

/// Which table of which folder.
struct TableKind
{
    FolderPtr folder;
    bool isHierarchy = false;
    bool isDeep = false;
    bool isAssociated = false;
};

/// An open table, with the cursor and the bookmarks where they must be.
class View
{
public:
    View(int number, int session, TableKind kind, Ref<IMAPITable> table);
    ~View();
    View(const View&) = delete;
    View& operator=(const View&) = delete;

    std::string Name() const;
    int Session() const { return m_session; }
    const TableKind& Kind() const { return m_kind; }
    const std::vector<model::Kind>& Kinds() const;
    IMAPITable& Table() { return *m_table; }
    bool IsFollowed() const { return m_sink.Get() != nullptr; }
    const std::vector<ULONG>& Columns() const { return m_columns; }

    void Choose(std::vector<ULONG> columns);
    void Sort(const Order& order);
    void Restrict(std::optional<Condition> restriction);
    void Follow();
    void Unfollow();

    /// The rows that the table must have.
    ModelRows Rows() const;
    test::CopiedRows Cells(const ModelRows& rows, size_t begin, size_t end) const;
    test::CopiedRows Cells(const ModelRows& rows) const { return Cells(rows, 0, rows.size()); }

    /// Moves cursor and bookmarks to where they must be after the changes since the last call.
    const ModelRows& Sync();
    size_t Cursor() const { return m_cursor.index; }
    void SetCursor(size_t index);
    /// Where the table says its cursor is.
    ULONG Position() const;

    struct Mark
    {
        std::string key; ///< empty: at the end
        size_t index = 0;
        bool isGone = false; ///< the row that it was made for
        bool isValid = true; ///< false: the table was sorted or restricted since
    };
    std::map<BOOKMARK, Mark>& Bookmarks() { return m_bookmarks; }
    /// The instance keys of the rows at which the cursor and the bookmarks are.
    std::vector<std::string> MarkedKeys() const;

    /// The copy that notifications keep is what the table must have.
    /// @param mayBeLost a TABLE_CHANGED or TABLE_RELOAD in place of row events is right
    void CompareMirror(bool mayBeLost);
    void CompareWhole();

private:
    void Reset();
    bool Move(Mark& mark, const ModelRows& now) const;
    void FindEnd(const ModelRows& now);
    void Gather(const Folder& folder, int depth, const std::string& above, ModelRows& rows) const;

    const int m_number;
    const int m_session;
    const TableKind m_kind;
    const Ref<IMAPITable> m_table;
    std::vector<ULONG> m_columns;
    Order m_order;
    std::optional<Condition> m_restriction;
    ModelRows m_seen; // at the last Sync
    Mark m_cursor;
    std::map<BOOKMARK, Mark> m_bookmarks;
    Ref<MirrorSink> m_sink;
    ULONG_PTR m_connection = 0;
};

/// The first place where they are not the same, for people.
std::string Unlike(const test::CopiedRows& got, const test::CopiedRows& expected);

} // namespace zebstore::model
