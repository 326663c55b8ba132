#include "tests/zebstore/model/Steps.h"

namespace zebstore::model
{

const std::vector<Step>& Steps()
{
    static const std::vector<Step> steps = []
    {
        std::vector<Step> all = FolderSteps();
        for (const std::vector<Step>& more : {MailSteps(), TableSteps()})
        {
            all.insert(all.end(), more.begin(), more.end());
        }
        return all;
    }();
    return steps;
}

std::vector<Operation> RandomSequence(unsigned seed, size_t length)
{
    std::mt19937 random(seed);
    std::vector<size_t> weighted;
    for (size_t kind = 0; kind < Steps().size(); ++kind)
    {
        weighted.insert(weighted.end(), static_cast<size_t>(Steps()[kind].weight), kind);
    }
    std::vector<Operation> operations;
    for (size_t i = 0; i < length; ++i)
    {
        const size_t kind = weighted[random() % weighted.size()];
        operations.push_back({kind, static_cast<unsigned>(random())});
    }
    return operations;
}

} // namespace zebstore::model
