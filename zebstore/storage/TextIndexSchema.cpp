#include "zebstore/storage/TextIndexSchema.h"

#include "zebstore/storage/Text.h"

#include <algorithm>
#include <string_view>
#include <vector>

namespace zebstore
{

namespace
{

struct Part
{
    const char* kind;
    const char* name;
    std::string sql;
};

// text_waiting: messages that are not in a block, or were changed since they were put into one.
// text_member: the messages of the blocks; place = block * 2048 + slot.
// text_block: `rows` counts those of its `made` messages that are still there; all of them are between `first` and
// `last`; `open` has the slots (four bytes each) of messages that are always candidates.
// text_gram: id = block * 256 + part, see TextBlock.h.
//
// Messages inside attachments, which no table shows, are not indexed. The version of Unicode, whose folding the grams
// depend on, is a comment: an index of another version is not taken for this one's.
std::vector<Part> Parts()
{
    constexpr const char* InFolder = " WHEN new.id > 4294967295 ";
    const std::string format = std::string("/* format 1, Unicode ") + UnicodeVersion() + " */";
    const auto trigger = [](const char* name, const std::string& rest)
    { return Part{"TRIGGER", name, "CREATE TRIGGER " + std::string(name) + " AFTER " + rest + " END"}; };
    return {
        {"TABLE", "text_waiting", "CREATE TABLE text_waiting(id INTEGER PRIMARY KEY)"},
        {"TABLE", "text_member",
         "CREATE TABLE text_member(place INTEGER PRIMARY KEY, message INTEGER NOT NULL UNIQUE)"},
        {"TABLE", "text_block",
         "CREATE TABLE text_block(" + format +
             " id INTEGER PRIMARY KEY, made INTEGER NOT NULL, rows INTEGER NOT NULL, first INTEGER NOT NULL, "
             "last INTEGER NOT NULL, bytes INTEGER NOT NULL, open BLOB)"},
        {"TABLE", "text_gram", "CREATE TABLE text_gram(id INTEGER PRIMARY KEY, slots BLOB NOT NULL)"},
        trigger("text_added", std::string("INSERT ON message") + InFolder +
                                  "BEGIN INSERT OR IGNORE INTO text_waiting(id) VALUES(new.id);"),
        trigger("text_changed", std::string("UPDATE OF props ON message") + InFolder +
                                    "BEGIN INSERT OR IGNORE INTO text_waiting(id) VALUES(new.id);"),
        trigger("text_moved", "UPDATE OF id ON message WHEN new.id != old.id BEGIN "
                              "UPDATE text_waiting SET id=new.id WHERE id=old.id; "
                              "UPDATE text_member SET message=new.id WHERE message=old.id; "
                              "UPDATE text_block SET first=min(first, new.id), last=max(last, new.id) WHERE "
                              "id=(SELECT place >> 11 FROM text_member WHERE message=new.id);"),
        trigger("text_removed", "DELETE ON message BEGIN DELETE FROM text_waiting WHERE id=old.id; "
                                "UPDATE text_block SET rows=rows-1 WHERE "
                                "id=(SELECT place >> 11 FROM text_member WHERE message=old.id); "
                                "DELETE FROM text_member WHERE message=old.id;"),
    };
}

} // namespace

TextIndexSchema ReadTextIndexSchema(Database& database)
{
    const std::vector<Part> parts = Parts();
    Query query(database, "SELECT sql FROM sqlite_schema WHERE name=?");
    size_t found = 0, same = 0;
    for (const Part& part : parts)
    {
        query.BindText(1, part.name);
        if (query.Step())
        {
            ++found;
            same += query.Bytes(0) == part.sql ? 1u : 0u;
        }
        query.Reset();
    }
    return found == 0             ? TextIndexSchema::None
           : same == parts.size() ? TextIndexSchema::Complete
                                  : TextIndexSchema::Foreign;
}

void CreateTextIndexSchema(Database& database)
{
    for (const Part& part : Parts())
    {
        database.Execute(part.sql.c_str());
    }
}

// Triggers first: they name the tables.
void DropTextIndexSchema(Database& database)
{
    std::vector<Part> parts = Parts();
    std::reverse(parts.begin(), parts.end());
    for (const Part& part : parts)
    {
        database.Execute((std::string("DROP ") + part.kind + " IF EXISTS " + part.name).c_str());
    }
}

} // namespace zebstore
