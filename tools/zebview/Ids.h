// The numbers of controls and commands.
#pragma once

namespace zeb::view
{

enum ControlId : int
{
    IdProfile = 100,
    IdFilter,
    IdTree,
    IdList,
    IdTabs,
    IdText,
    IdProperties,
    IdRecipients,
    IdAttachments,
    IdLog,
    IdStatus,
    IdProfileLabel,
    IdFilterLabel,
};

enum CommandId : int
{
    CommandExit = 200,
    CommandProfile,
    CommandSave,
    CommandOpenValue,
    CommandCopy,
    CommandSelectAll,
    CommandReload,
    CommandFilter,
    CommandNextPane,
    CommandPreviousPane,
    CommandAddressBook,
    CommandAllFolders,
    CommandLog,
    CommandClearLog,
    CommandMessageTab, ///< the four tabs follow one another
    CommandPropertiesTab,
    CommandRecipientsTab,
    CommandAttachmentsTab,
};

enum TimerId : unsigned
{
    TimerFilter = 1, ///< the filter is applied when nothing has been typed for a moment
    TimerDetails,    ///< the selected row is opened when the selection has rested for a moment
    TimerLog,        ///< the provider's trace is read
};

} // namespace zeb::view
