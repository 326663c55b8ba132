// Prints the next two changes of the inbox as they happen, from any process.
#include "Mapi.h"

#include <future>

/// Called on a thread of the provider's, for one change after the other. The notification is valid during the call only.
class Changes : public CAdviseSinkDelegate
{
public:
    std::future<void> Last() { return m_last.get_future(); }

private:
    void OnTableModified_Row_Added(TABLE_NOTIFICATION* change) override { Print("added", change); }
    void OnTableModified_Row_Modified(TABLE_NOTIFICATION* change) override { Print("modified", change); }

    void Print(const char* what, TABLE_NOTIFICATION* change)
    {
        if (m_left == 0)
        {
            return;
        }
        // The row has the columns that the table had when it was advised.
        const CZebRow row(&change->row, nullptr);
        std::printf("%s: %s\n", what, row[PR_SUBJECT_W].StringUtf8().GetString());
        std::fflush(stdout);
        if (--m_left == 0)
        {
            m_last.set_value();
        }
    }

    std::promise<void> m_last;
    int m_left = 2;
};

int main()
try
{
    Mapi mapi;
    CZebTable contents = mapi.OpenInbox().GetContentsTable(MAPI_UNICODE);
    contents.SetColumns(2, PR_ENTRYID, PR_SUBJECT_W);
    Changes changes;
    // The binder ends the registration at the end of the scope, and waits for a call that is in progress.
    CAdviseSinkBinder watch(&changes, nullptr);
    watch.AdviseChecked(contents);
    std::printf("watching the inbox\n");
    std::fflush(stdout);
    changes.Last().wait();
}
catch (...)
{
    return ReportFailure();
}
