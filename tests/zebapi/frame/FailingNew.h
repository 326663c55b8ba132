// Makes `new` fail on purpose.
#pragma once

namespace zeb::test
{

/// While it lives, every `new` of this thread after the next `after` ones throws std::bad_alloc.
class FailingNew
{
public:
    explicit FailingNew(int after = 0);
    ~FailingNew();
    FailingNew(const FailingNew&) = delete;
    FailingNew& operator=(const FailingNew&) = delete;
};

} // namespace zeb::test
