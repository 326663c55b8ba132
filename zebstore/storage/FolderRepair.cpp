#include "zebstore/storage/FolderRepair.h"

#include "zebstore/storage/StandardFolders.h"
#include "zebstore/storage/StoreFormat.h"

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
    // The messages of such a folder, whose numbers hold that of the folder, are found to belong to no folder.
    Renumber(NumberedFolders, "folder",
             {"UPDATE folder SET parent=? WHERE parent=?", "UPDATE receive SET folder=? WHERE folder=?"});
    Remove("counters whose folder is missing",
           "DELETE FROM contents WHERE container != 0 AND (container >> 1) NOT IN (SELECT id FROM folder)");
    Change("counters belong to another folder: corrected",
           "UPDATE contents SET folder=nullif(container >> 1, 0) WHERE folder IS NOT nullif(container >> 1, 0)");
    MakeStandardFolders();
    MakeMissingContents();
    // Those below a folder are reached with it.
    for (std::vector<FolderId> lost = Unreached(); !lost.empty(); lost = Unreached())
    {
        const std::string name = Place(lost[0], IdOf(StandardFolder::IpmSubtree));
        m_report.found("folder " + std::to_string(lost[0]) + " is not reached from the root: moved to '" + name +
                       "' under the top of the subtree");
    }
}

void FolderRepair::MakeStandardFolders()
{
    for (const StandardName& each : StandardNames)
    {
        const FolderId folder = IdOf(each.folder);
        const std::string named = "folder " + std::to_string(folder) + " ('" + each.name + "')";
        if (!m_store.Folders().Exists(folder))
        {
            PropertySet properties;
            properties.SetText(PR_DISPLAY_NAME_W, FreeName(each.name, folder, each.Parent()));
            m_store.Folders().Insert(folder, each.Parent(), properties, each.type);
            m_report.found(named + " is missing: created");
            continue;
        }
        Query query(m_database, "SELECT coalesce(parent, 0)=? AND type=? FROM folder WHERE id=?");
        query.Bind(1, each.Parent()).Bind(2, each.type).Bind(3, folder);
        if (query.Step() && query.Number(0) == 0)
        {
            Query(m_database, "UPDATE folder SET type=? WHERE id=?").Bind(1, each.type).Bind(2, folder).Run();
            Place(folder, each.Parent());
            m_report.found(named + " is not where it was created: put back");
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

std::vector<FolderId> FolderRepair::Unreached()
{
    return Query(m_database, "WITH RECURSIVE tree(id) AS (SELECT 1 UNION SELECT f.id FROM folder f JOIN tree t "
                             "ON f.parent=t.id) SELECT id FROM folder WHERE id NOT IN tree")
        .Numbers();
}

// A name that no other folder under the parent has.
std::string FolderRepair::FreeName(const std::string& name, FolderId folder, FolderId parent)
{
    if (parent == 0)
    {
        return name;
    }
    const FolderId found = name.empty() ? folder : m_store.Folders().Find(parent, name);
    const bool isFree = !name.empty() && (found == 0 || found == folder);
    return isFree ? name : name + (name.empty() ? "" : " ") + "(" + std::to_string(folder) + ")";
}

// Puts a folder under a parent, 0 for the root. @return the name that it has there
std::string FolderRepair::Place(FolderId folder, FolderId parent)
{
    PropertySet properties = m_store.Folders().Properties(folder);
    const std::string name = FreeName(properties.Text(PR_DISPLAY_NAME_W), folder, parent);
    properties.SetText(PR_DISPLAY_NAME_W, name);
    const std::string passing = "\x01" + std::to_string(folder); // no folder's key begins so
    Query(m_database, "UPDATE folder SET parent=nullif(?, 0), key=? WHERE id=?")
        .Bind(1, parent)
        .BindText(2, passing)
        .Bind(3, folder)
        .Run();
    m_store.Folders().SaveProperties(folder, properties);
    return name;
}

} // namespace zebstore
