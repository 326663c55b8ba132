#include "zebstore/storage/FolderRepair.h"

namespace zebstore
{

FolderRepair::FolderRepair(StoreFile& store, const WorkReport& report)
    : RepairSql(store.Connection().Db(), report)
    , m_store(store)
    , m_database(store.Connection().Db())
    , m_report(report)
{
}

void FolderRepair::Mend()
{
    const std::vector<std::int64_t> lost =
        Query(m_database, "WITH RECURSIVE tree(id) AS (SELECT 1 UNION SELECT f.id FROM folder f JOIN tree t "
                          "ON f.parent=t.id) SELECT id FROM folder WHERE id NOT IN tree AND (parent IS NULL OR "
                          "parent NOT IN (SELECT id FROM folder) OR id > ?)")
            .Bind(1, IdOf(StandardFolder::CommonViews))
            .Numbers();
    Change("counters whose folder is missing: removed",
           "DELETE FROM contents WHERE folder IS NOT NULL AND folder NOT IN (SELECT id FROM folder)");
    MakeMissingContents();
    for (const std::int64_t folder : lost)
    {
        if (!IsReached(folder))
        {
            MoveToSubtree(folder);
        }
    }
}

bool FolderRepair::HasContents(ContentsKey contents)
{
    Query query(m_database, "SELECT 1 FROM contents WHERE container=?");
    return query.Bind(1, contents.Column()).Step();
}

void FolderRepair::MakeMissingContents()
{
    if (!HasContents(ContentsKey::Embedded()))
    {
        m_report.found("the counters of messages inside attachments are missing: created");
        m_store.Contents().Insert(ContentsKey::Embedded());
    }
    for (const std::int64_t folder : Query(m_database, "SELECT id FROM folder").Numbers())
    {
        for (const bool associated : {false, true})
        {
            const ContentsKey contents(folder, associated);
            if (HasContents(contents))
            {
                continue;
            }
            m_report.found("folder " + std::to_string(folder) + ": its counters are missing: made");
            m_store.Contents().Insert(contents);
        }
    }
}

bool FolderRepair::IsReached(FolderId folder)
{
    Query query(m_database, "WITH RECURSIVE tree(id) AS (SELECT 1 UNION SELECT f.id FROM folder f JOIN tree t "
                            "ON f.parent=t.id) SELECT 1 FROM tree WHERE id=?");
    return query.Bind(1, folder).Step();
}

// A name that is free in the top of the subtree.
std::string FolderRepair::FreeName(const std::string& name, FolderId folder)
{
    const FolderId top = IdOf(StandardFolder::IpmSubtree);
    const bool isFree = !name.empty() && m_store.Folders().Find(top, name) == 0;
    return isFree ? name : name + (name.empty() ? "" : " ") + "(" + std::to_string(folder) + ")";
}

void FolderRepair::MoveToSubtree(FolderId folder)
{
    PropertySet properties = m_store.Folders().Properties(folder);
    const std::string name = FreeName(properties.Text(PR_DISPLAY_NAME_W), folder);
    properties.SetText(PR_DISPLAY_NAME_W, name);
    const std::string passing = "\x01" + std::to_string(folder); // no folder's key begins so
    Query(m_database, "UPDATE folder SET parent=?, key=? WHERE id=?")
        .Bind(1, IdOf(StandardFolder::IpmSubtree))
        .BindText(2, passing)
        .Bind(3, folder)
        .Run();
    m_store.Folders().SaveProperties(folder, properties);
    m_report.found("folder " + std::to_string(folder) + " is not reached from the root: moved to '" + name +
                   "' under the top of the subtree");
}

} // namespace zebstore
