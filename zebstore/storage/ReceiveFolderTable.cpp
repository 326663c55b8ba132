#include "zebstore/storage/ReceiveFolderTable.h"

#include "zebstore/storage/Text.h"

namespace zebstore
{

ReceiveFolder ReceiveFolderTable::Of(const std::string& messageClass)
{
    const std::lock_guard hold(m_connection.Lock());
    Query query(m_connection.Db(), "SELECT class, folder FROM receive WHERE class=?");
    for (std::string name = messageClass;;)
    {
        query.BindText(1, name);
        if (query.Step())
        {
            return {std::string(query.Bytes(0)), query.Number(1)};
        }
        query.Reset();
        if (name.empty())
        {
            throw Error(MAPI_E_NOT_FOUND, "the store file '" + m_connection.Path() + "' has no receive folder");
        }
        const size_t dot = name.rfind('.');
        name.resize(dot == std::string::npos ? 0 : dot);
    }
}

void ReceiveFolderTable::Set(const std::string& messageClass, FolderId folder)
{
    Require(IsAscii(messageClass), "the message class is not ASCII");
    Require(folder != 0 || !messageClass.empty(), "the default receive folder cannot be removed");
    StoreTransaction transaction(m_connection);
    Query(m_connection.Db(), "DELETE FROM receive WHERE class=?").BindText(1, messageClass).Run();
    if (folder != 0)
    {
        m_folders.RequireExists(folder);
        Query(m_connection.Db(), "INSERT INTO receive(class, folder) VALUES(?, ?)")
            .BindText(1, messageClass)
            .Bind(2, folder)
            .Run();
    }
    transaction.Commit();
}

std::vector<ReceiveFolder> ReceiveFolderTable::All()
{
    const std::lock_guard hold(m_connection.Lock());
    std::vector<ReceiveFolder> folders;
    Query query(m_connection.Db(), "SELECT class, folder FROM receive ORDER BY class");
    while (query.Step())
    {
        folders.push_back({std::string(query.Bytes(0)), query.Number(1)});
    }
    return folders;
}

} // namespace zebstore
