// IMailUser.
#pragma once

#include "zebstore/addressbook/EntryObject.h"

namespace zebstore
{

class MailUser final : public EntryObject<IMailUser>
{
public:
    using EntryObject::EntryObject;

private:
    bool Answers(REFIID iid) const override { return IsOneOf(iid, {&IID_IMAPIProp, &IID_IMailUser}); }
};

} // namespace zebstore
