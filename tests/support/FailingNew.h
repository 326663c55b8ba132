// Makes `new` fail on purpose.
#pragma once

namespace zeb::test
{

/// While it lives, every `new` of this thread after the next `after` ones throws std::bad_alloc; with `once` only the
/// first of those.
class FailingNew
{
public:
    explicit FailingNew(int after = 0, bool once = false);
    ~FailingNew();
    FailingNew(const FailingNew&) = delete;
    FailingNew& operator=(const FailingNew&) = delete;
};

} // namespace zeb::test
