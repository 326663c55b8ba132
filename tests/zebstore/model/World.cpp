#include "tests/zebstore/model/World.h"

#include "platform/tags.h"

#include <algorithm>

namespace zebstore::model
{

namespace
{

void Gather(const FolderPtr& folder, std::vector<FolderPtr>& folders)
{
    folders.push_back(folder);
    for (const FolderPtr& child : folder->children)
    {
        Gather(child, folders);
    }
}

std::string BytesOfCell(const std::string& cell)
{
    return cell.substr(cell.find(' ') + 1);
}

// Unknown identifiers are taken, known ones compared.
void Learn(const test::CopiedRow& row, std::vector<BYTE>& id, std::string& key)
{
    const std::string bytes = BytesOfCell(row.cells[row.cells.size() - 2]);
    const std::vector<BYTE> now(bytes.begin(), bytes.end());
    Check(id.empty() || (id == now && key == row.key), "another object is in its place");
    id = now;
    key = row.key;
}

} // namespace

World::World(const Words& words)
    : m_words(words)
{
    OpenSessions();
    m_session = 0;
    m_root = std::make_shared<Folder>();
    m_root->SetName(Text(std::string("model")).text);
    const Ref<IMAPIFolder> root = NewFolder(*Inbox(), "model");
    TakeIdentifiers(*root, m_root->id, m_root->key);
    StartFence();
}

World::~World()
{
    m_held.clear();
    m_views.clear();
    m_fence.reset();
}

void World::OpenSessions()
{
    for (int i = 0; i < Sessions; ++i)
    {
        m_session = i;
        Provider::m_session = {};
        m_stores[i] = OpenStore();
        m_sessions[i] = Provider::m_session;
    }
    Provider::m_session = m_sessions[0];
}

// A table of a folder that no step changes: when it has heard of two changes, one after the other, the notification thread
// has gone round, and all that was to be told of earlier changes was told.
void World::StartFence()
{
    m_fenceFolder = NewFolder(*Inbox(), "fence");
    m_fenceMail = SaveMessage(*m_fenceFolder, "fence");
    IMAPITable* table = nullptr;
    Check(m_fenceFolder->GetContentsTable(0, &table), S_OK, "GetContentsTable");
    const Ref<IMAPITable> owner = Ref<IMAPITable>::Adopt(table);
    SetColumns(*table, {PR_MESSAGE_FLAGS, PR_INSTANCE_KEY});
    m_fence = std::make_unique<test::Followed>(owner);
}

void World::Fence()
{
    EntryList list(m_fenceMail);
    for (const ULONG flag : {CLEAR_READ_FLAG, ULONG(0)})
    {
        Check(m_fenceFolder->SetReadFlags(&list, 0, nullptr, flag), S_OK, "SetReadFlags of the fence");
        Check(m_fence->Sink().Receives(++m_fences), "no notification for ten seconds");
    }
}

void World::Say(const std::string& text)
{
    m_log.push_back("session " + std::to_string(m_session) + ": " + text);
}

std::vector<FolderPtr> World::Folders() const
{
    std::vector<FolderPtr> folders;
    Gather(m_root, folders);
    return folders;
}

std::vector<MailPtr> World::AllMails() const
{
    std::vector<MailPtr> mails;
    for (const FolderPtr& folder : Folders())
    {
        mails.insert(mails.end(), folder->normal.begin(), folder->normal.end());
        mails.insert(mails.end(), folder->associated.begin(), folder->associated.end());
    }
    return mails;
}

FolderPtr World::Holder(const Mail& mail) const
{
    for (const FolderPtr& folder : Folders())
    {
        for (const MailPtr& each : folder->Mails(mail.isAssociated))
        {
            if (each.get() == &mail)
            {
                return folder;
            }
        }
    }
    return nullptr;
}

void World::OpenView(const TableKind& kind, std::vector<ULONG> columns)
{
    const Ref<IMAPIFolder> folder = Open(*kind.folder);
    IMAPITable* table = nullptr;
    if (kind.isHierarchy)
    {
        Check(folder->GetHierarchyTable(MAPI_UNICODE | (kind.isDeep ? CONVENIENT_DEPTH : 0), &table), S_OK,
              "GetHierarchyTable");
    }
    else
    {
        Check(folder->GetContentsTable(MAPI_UNICODE | (kind.isAssociated ? MAPI_ASSOCIATED : 0), &table), S_OK,
              "GetContentsTable");
    }
    m_views.push_back(std::make_unique<View>(++m_lastNumber, m_session, kind, Ref<IMAPITable>::Adopt(table)));
    Say("open " + m_views.back()->Name());
    // The table's rows are those of its first call.
    m_views.back()->SetCursor(0);
    m_views.back()->Choose(std::move(columns));
}

void World::LearnMails(Folder& folder)
{
    for (const bool ofAssociated : {false, true})
    {
        IMAPITable* table = nullptr;
        Check(Open(folder)->GetContentsTable(ofAssociated ? MAPI_ASSOCIATED : 0, &table), S_OK, "GetContentsTable");
        const Ref<IMAPITable> owner = Ref<IMAPITable>::Adopt(table);
        SetColumns(*table, {PR_ENTRYID, PR_INSTANCE_KEY});
        const test::CopiedRows rows = ReadRows(*table);
        const std::vector<MailPtr>& mails = folder.Mails(ofAssociated);
        Check(rows.size() == mails.size(), "folder " + std::to_string(folder.number) + " has " +
                                               std::to_string(rows.size()) + " messages, not " +
                                               std::to_string(mails.size()));
        for (size_t i = 0; i < rows.size(); ++i)
        {
            Learn(rows[i], mails[i]->id, mails[i]->key);
        }
    }
}

void World::LearnFolders(Folder& folder)
{
    folder.SortChildren();
    IMAPITable* table = nullptr;
    Check(Open(folder)->GetHierarchyTable(0, &table), S_OK, "GetHierarchyTable");
    const Ref<IMAPITable> owner = Ref<IMAPITable>::Adopt(table);
    SetColumns(*table, {PR_DISPLAY_NAME_W, PR_ENTRYID, PR_INSTANCE_KEY});
    const test::CopiedRows rows = ReadRows(*table);
    Check(rows.size() == folder.children.size(), "folder " + std::to_string(folder.number) + " has " +
                                                     std::to_string(rows.size()) + " subfolders, not " +
                                                     std::to_string(folder.children.size()));
    for (size_t i = 0; i < rows.size(); ++i)
    {
        Folder& child = *folder.children[i];
        Check(rows[i].cells[0] == ShownAs(PR_DISPLAY_NAME_W, Text(child.Name())), "another subfolder is in its place");
        const bool isNew = child.id.empty();
        Learn(rows[i], child.id, child.key);
        if (isNew)
        {
            LearnMails(child);
            LearnFolders(child);
        }
    }
}

void World::DropViewsOfGoneFolders()
{
    const std::vector<FolderPtr> folders = Folders();
    const auto isGone = [&](const std::unique_ptr<View>& view)
    { return std::find(folders.begin(), folders.end(), view->Kind().folder) == folders.end(); };
    m_views.erase(std::remove_if(m_views.begin(), m_views.end(), isGone), m_views.end());
}

void World::Run(const Operation& operation)
{
    Random random(operation.seed, m_words);
    m_session = static_cast<int>(random.Below(Sessions));
    m_mayLose = false;
    const size_t said = m_log.size();
    Steps()[operation.kind].run(*this, random);
    if (m_log.size() == said)
    {
        return; // there was nothing to do it to
    }
    Fence();
    DropViewsOfGoneFolders();
    for (const std::unique_ptr<View>& view : m_views)
    {
        if (view->IsFollowed())
        {
            view->Sync();
            view->CompareMirror(m_mayLose);
        }
    }
}

void World::CompareAll()
{
    Say("compare all");
    for (const FolderPtr& folder : Folders())
    {
        LearnMails(*folder);
        LearnFolders(*folder);
    }
    for (const MailPtr& mail : AllMails())
    {
        Compare(*Open(*mail), *mail);
    }
    for (const std::unique_ptr<View>& view : m_views)
    {
        view->CompareWhole();
    }
}

} // namespace zebstore::model
