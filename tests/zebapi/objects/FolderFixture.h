// A folder over a recording double, with what it holds.
#pragma once

#include "ObjectsTest.h"
#include "tests/support/doubles/RecordingContainers.h"
#include "zebapi/Folder.h"

namespace zeb::test
{

class FolderFixture : public ObjectsTest
{
protected:
    FolderFixture()
    {
        m_double.m_hierarchy = &m_subfolders;
        m_double.m_contents = &m_messages;
        m_double.m_created = &m_new;
        m_double.m_message = &m_message;
        m_double.m_openable.Add("one", &m_existing, MAPI_FOLDER);
    }

    RowTable m_subfolders{m_journal, "subfolders"};
    RowTable m_messages{m_journal, "messages"};
    RecordingFolder m_existing{m_journal, "existing"};
    RecordingFolder m_new{m_journal, "new"};
    RecordingMessage m_message{m_journal};
    RecordingFolder m_double{m_journal};
    CZebFolder m_folder{&m_double};
};

} // namespace zeb::test
