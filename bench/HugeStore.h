// Stores of so many messages that they are made by SQL.
#pragma once

#include "bench/Benches.h"
#include "bench/Stores.h"

#include <memory>
#include <utility>

namespace bench
{

/// A store whose inbox was filled by SQL: every row has the properties of the first message, and sort keys of its own.
class HugeStore
{
public:
    HugeStore(const std::string& folder, ULONG count);
    ~HugeStore() { Close(); }
    HugeStore(const HugeStore&) = delete;
    HugeStore& operator=(const HugeStore&) = delete;

    CZebFolder& Inbox() { return m_inbox; }
    ULONG Count() const { return m_count; }

private:
    void Open();
    void Close();
    void Make();
    void Fill(const std::string& path) const;

    std::string m_path, m_profile;
    ULONG m_count;
    CZebSession m_session{nullptr};
    CZebMsgStore m_store;
    CZebFolder m_inbox;
};

using HugeStores = std::pair<std::shared_ptr<HugeStore>, std::shared_ptr<HugeStore>>;

/// The huge store and the one that it is compared with.
HugeStores BothOf(const Options& options);

} // namespace bench
