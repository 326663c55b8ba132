#include "tests/zebstore/model/Steps.h"

#include "platform/tags.h"

#include <algorithm>

namespace zebstore::model
{

namespace
{

constexpr size_t MostFolders = 14;

std::string Named(const Folder& folder)
{
    return "folder " + std::to_string(folder.number);
}

Wide RandomName(Random& random)
{
    const Wide name = random.Text(true);
    return name.empty() ? Text(std::string("folder")).text : name;
}

LPTSTR Given(const Wide& name)
{
    return reinterpret_cast<LPTSTR>(const_cast<WCHAR*>(name.c_str()));
}

LPENTRYID IdOf(const Folder& folder)
{
    return Id(folder.id);
}
ULONG SizeOfId(const Folder& folder)
{
    return static_cast<ULONG>(folder.id.size());
}

/// Null when there is only the root.
FolderPtr PickBelowRoot(World& world, Random& random)
{
    const std::vector<FolderPtr> folders = world.Folders();
    return folders.size() > 1 ? folders[1 + random.Below(folders.size() - 1)] : nullptr;
}

FolderPtr TakeOut(const Folder& folder)
{
    std::vector<FolderPtr>& siblings = folder.parent->children;
    const auto found =
        std::find_if(siblings.begin(), siblings.end(), [&](const FolderPtr& each) { return each.get() == &folder; });
    FolderPtr taken = *found;
    siblings.erase(found);
    return taken;
}

void PutInto(Folder& parent, const FolderPtr& folder)
{
    folder->parent = &parent;
    parent.children.push_back(folder);
    parent.SortChildren();
}

void CreateFolderStep(World& world, Random& random)
{
    const FolderPtr parent = random.Pick(world.Folders());
    if (world.Folders().size() > MostFolders)
    {
        return;
    }
    const Wide name = RandomName(random);
    const bool mayExist = random.OneIn(3);
    world.Say("create folder " + Readable(Text(name)) + " in " + Named(*parent) + (mayExist ? ", or open it" : ""));
    Folder* const there = parent->Find(name);
    const HRESULT expected = there != nullptr && !mayExist ? MAPI_E_COLLISION : S_OK;
    IMAPIFolder* made = nullptr;
    const ULONG flags = MAPI_UNICODE | (mayExist ? OPEN_IF_EXISTS : 0);
    Check(world.Open(*parent)->CreateFolder(FOLDER_GENERIC, Given(name), nullptr, nullptr, flags, &made), expected,
          "CreateFolder");
    const Ref<IMAPIFolder> owner = Ref<IMAPIFolder>::Adopt(made);
    if (made == nullptr)
    {
        return;
    }
    auto folder = std::make_shared<Folder>();
    TakeIdentifiers(*made, folder->id, folder->key);
    if (there != nullptr)
    {
        Check(folder->id == there->id, "CreateFolder opened another folder");
        return;
    }
    folder->number = ++world.LastNumber();
    folder->SetName(name);
    PutInto(*parent, folder);
    world.Say("it is " + Named(*folder));
}

void DeleteFolderStep(World& world, Random& random)
{
    const FolderPtr folder = PickBelowRoot(world, random);
    if (!folder)
    {
        return;
    }
    const ULONG flags =
        random.OneIn(2) ? DEL_MESSAGES | DEL_FOLDERS : static_cast<ULONG>(random.Below(4)) * DEL_MESSAGES;
    world.Say("delete " + Named(*folder) + (flags & DEL_MESSAGES ? " with messages" : "") +
              (flags & DEL_FOLDERS ? " with subfolders" : ""));
    HRESULT expected = S_OK;
    if (!folder->children.empty() && !(flags & DEL_FOLDERS))
    {
        expected = MAPI_E_HAS_FOLDERS;
    }
    else if (folder->normal.size() + folder->associated.size() > 0 && !(flags & DEL_MESSAGES))
    {
        expected = MAPI_E_HAS_MESSAGES;
    }
    Check(world.Open(*folder->parent)->DeleteFolder(SizeOfId(*folder), IdOf(*folder), 0, nullptr, flags), expected,
          "DeleteFolder");
    if (expected == S_OK)
    {
        TakeOut(*folder);
        world.MayLoseEvents();
    }
}

void MoveFolderStep(World& world, Random& random)
{
    const FolderPtr folder = PickBelowRoot(world, random);
    const FolderPtr target = random.Pick(world.Folders());
    if (!folder)
    {
        return;
    }
    const Wide name = random.OneIn(2) ? RandomName(random) : Wide();
    world.Say("move " + Named(*folder) + " to " + Named(*target) + (name.empty() ? "" : " as " + Readable(Text(name))));
    Folder* const there = target->Find(name.empty() ? folder->Name() : name);
    const bool isWithin = target->IsWithin(*folder);
    const bool isTaken = there != nullptr && there != folder.get();
    const HRESULT expected = isWithin ? MAPI_E_FOLDER_CYCLE : isTaken ? MAPI_E_COLLISION : S_OK;
    Check(world.Open(*folder->parent)
              ->CopyFolder(SizeOfId(*folder), IdOf(*folder), nullptr, world.Open(*target).Get(),
                           name.empty() ? nullptr : Given(name), 0, nullptr, FOLDER_MOVE | MAPI_UNICODE),
          expected, "CopyFolder to move");
    if (expected != S_OK)
    {
        return;
    }
    PutInto(*target, TakeOut(*folder));
    ++folder->version;
    if (!name.empty())
    {
        folder->SetName(name);
    }
    target->SortChildren();
}

void CopyFolderStep(World& world, Random& random)
{
    const FolderPtr folder = PickBelowRoot(world, random);
    const FolderPtr target = random.Pick(world.Folders());
    if (!folder || world.Folders().size() > MostFolders || world.AllMails().size() > 200)
    {
        return;
    }
    const bool withSubfolders = random.OneIn(2);
    const Wide name = random.OneIn(2) ? RandomName(random) : Wide();
    world.Say("copy " + Named(*folder) + (withSubfolders ? " with subfolders" : "") + " to " + Named(*target) +
              (name.empty() ? "" : " as " + Readable(Text(name))));
    const bool isWithin = withSubfolders && target->IsWithin(*folder);
    const bool isTaken = target->Find(name.empty() ? folder->Name() : name) != nullptr;
    const HRESULT expected = isWithin ? MAPI_E_FOLDER_CYCLE : isTaken ? MAPI_E_COLLISION : S_OK;
    const ULONG flags = MAPI_UNICODE | (withSubfolders ? COPY_SUBFOLDERS : 0);
    Check(world.Open(*folder->parent)
              ->CopyFolder(SizeOfId(*folder), IdOf(*folder), nullptr, world.Open(*target).Get(),
                           name.empty() ? nullptr : Given(name), 0, nullptr, flags),
          expected, "CopyFolder");
    if (expected != S_OK)
    {
        return;
    }
    const FolderPtr copy = CopyOf(*folder, withSubfolders, world.LastNumber());
    if (!name.empty())
    {
        copy->SetName(name);
    }
    PutInto(*target, copy);
    world.LearnFolders(*target);
    world.Say("the copy is " + Named(*copy));
}

void RenameFolderStep(World& world, Random& random)
{
    const FolderPtr folder = PickBelowRoot(world, random);
    if (!folder)
    {
        return;
    }
    const Wide name = RandomName(random);
    world.Say("rename " + Named(*folder) + " to " + Readable(Text(name)));
    Folder* const there = folder->parent->Find(name);
    const HRESULT expected = there != nullptr && there != folder.get() ? MAPI_E_COLLISION : S_OK;
    Room room;
    SPropValue value = room.Mapi(PR_DISPLAY_NAME_W, Text(name));
    Check(world.Open(*folder)->SetProps(1, &value, nullptr), expected, "SetProps of a folder's name");
    if (expected == S_OK)
    {
        folder->SetName(name);
        folder->parent->SortChildren();
        ++folder->version;
    }
}

void CommentFolderStep(World& world, Random& random)
{
    const FolderPtr folder = PickBelowRoot(world, random);
    if (!folder)
    {
        return;
    }
    const Properties before = folder->own;
    folder->own.erase(PROP_ID(PR_COMMENT));
    if (!random.OneIn(3))
    {
        folder->own[PROP_ID(PR_COMMENT)] = Text(random.Text());
    }
    world.Say("comment " + Named(*folder));
    Write(*world.Open(*folder), before, folder->own);
    ++folder->version;
}

void EmptyFolderStep(World& world, Random& random)
{
    const FolderPtr folder = random.Pick(world.Folders());
    const bool withAssociated = random.OneIn(2);
    world.Say("empty " + Named(*folder) + (withAssociated ? " with associated messages" : ""));
    Check(world.Open(*folder)->EmptyFolder(0, nullptr, withAssociated ? DEL_ASSOCIATED : 0), S_OK, "EmptyFolder");
    folder->normal.clear();
    folder->children.clear();
    if (withAssociated)
    {
        folder->associated.clear();
    }
    world.MayLoseEvents();
}

} // namespace

const std::vector<Step>& FolderSteps()
{
    static const std::vector<Step> steps = {
        {"create a folder", 8, CreateFolderStep}, {"delete a folder", 2, DeleteFolderStep},
        {"move a folder", 3, MoveFolderStep},     {"copy a folder", 2, CopyFolderStep},
        {"rename a folder", 3, RenameFolderStep}, {"comment a folder", 1, CommentFolderStep},
        {"empty a folder", 1, EmptyFolderStep}};
    return steps;
}

} // namespace zebstore::model
