// A store with the messages of a model.
#pragma once

#include "tests/zebstore/storage/NotifyTables.h"
#include "tests/zebstore/storage/TextModel.h"

#include "zebstore/storage/TextBlock.h"
#include "zebstore/storage/TextRestriction.h"

#include <deque>

namespace zebstore::test
{

/// A store with the messages of a model, and what the model expects of restrictions.
class TextIndexTest : public NotifyTables
{
protected:
    static constexpr FolderId Other = Archive;

    static WorkReport Silent()
    {
        return {[](const std::string&) {}, [](std::uint64_t, std::uint64_t) {}};
    }

    void TurnOn()
    {
        Store().Texts().TurnOn();
        Store().Texts().Complete(Silent());
    }

    /// Narrow or wide, in the row, as a large value or through a stream.
    void SetText(PropertySet& properties, ULONG tag, const Wide& text)
    {
        const size_t way = m_random.Below(6);
        const bool isAscii = std::all_of(text.begin(), text.end(), [](WCHAR each) { return each > 0 && each < 0x80; });
        if (way == 0 && isAscii)
        {
            const std::string narrow(text.begin(), text.end());
            properties.Set(NarrowValue(tag, narrow.c_str()));
        }
        else if (way == 1)
        {
            auto staged = Store().Stage();
            staged->Write(0, text.data(), text.size() * sizeof(WCHAR));
            properties.SetLarge(tag, staged);
        }
        else
        {
            properties.SetText(tag, StoredOf(text));
        }
    }

    MessageContent ContentOf(const TextModel& model)
    {
        MessageContent content;
        for (const auto& each : model.texts)
        {
            SetText(content.properties, each.first, each.second);
        }
        content.recipients.emplace();
        for (const auto& texts : model.recipients)
        {
            content.recipients->emplace_back();
            for (const auto& each : texts)
            {
                content.recipients->back().SetText(each.first, StoredOf(each.second));
            }
        }
        return content;
    }

    void Create(ContentsKey contents)
    {
        TextModel model = m_random.Message();
        const MessageId message = Store().Messages().Create(contents, ContentOf(model));
        m_models[message] = std::move(model);
    }

    MessageId Any()
    {
        auto chosen = m_models.begin();
        std::advance(chosen, static_cast<std::ptrdiff_t>(m_random.Below(m_models.size())));
        return chosen->first;
    }

    void ChangeOnce()
    {
        const MessageId message = Any();
        const auto to = [&](FolderId folder) { return ContentsKey::Of(message).Folder() == folder ? Other : folder; };
        switch (m_random.Below(7))
        {
        case 0:
        case 1:
            return Create({m_random.Below(2) != 0 ? Inbox : Other, m_random.Below(4) == 0});
        case 2:
            m_models[message] = m_random.Message();
            Store().Messages().Save(message, ContentOf(m_models[message]), 0);
            return;
        case 3:
            Store().Messages().ChangeFlags({message}, MSGFLAG_READ, 0);
            return;
        case 4:
        {
            const MessageId moved = Store().Messages().Move({message}, to(Inbox))[0];
            m_models[moved] = m_models[message];
            m_models.erase(message);
            return;
        }
        case 5:
        {
            const MessageId copied = Store().Messages().Copy({message}, to(Inbox))[0];
            m_models[copied] = m_models[message];
            return;
        }
        default:
            Store().Messages().Delete({message});
            m_models.erase(message);
        }
    }

    std::vector<TextModel> Models() const
    {
        std::vector<TextModel> models;
        for (const auto& each : m_models)
        {
            models.push_back(each.second);
        }
        return models;
    }

    std::vector<RowKey> Expected(const TextCondition& condition, ContentsKey contents) const
    {
        std::vector<RowKey> keys;
        for (const auto& each : m_models)
        {
            if (ContentsKey::Of(each.first) == contents && Holds(condition, each.second))
            {
                keys.push_back(each.first);
            }
        }
        return keys;
    }

    SPropValue ValueOf(ULONG tag, const Wide& text)
    {
        m_texts.push_back(text);
        SPropValue value = Value(CHANGE_PROP_TYPE(tag, PT_UNICODE));
        value.Value.lpszW = &m_texts.back()[0];
        return value;
    }

    SRestriction* Made(const TextCondition& condition)
    {
        std::vector<SRestriction*> children;
        for (const TextCondition& child : condition.children)
        {
            children.push_back(Made(child));
        }
        switch (condition.kind)
        {
        case TextCondition::Kind::And:
            return m_make.And(children);
        case TextCondition::Kind::Or:
            return m_make.Or(children);
        case TextCondition::Kind::Not:
            return m_make.Not(children[0]);
        case TextCondition::Kind::Recipient:
            return m_make.Sub(PR_MESSAGE_RECIPIENTS, children[0]);
        case TextCondition::Kind::Equal:
            return m_make.Property(RELOP_EQ, ValueOf(condition.tag, condition.text));
        default:
            return m_make.Content(condition.fuzzy, ValueOf(condition.tag, condition.text));
        }
    }

    std::vector<RowKey> Keys(const TextCondition& condition, ContentsKey contents)
    {
        return MakeContentsRows(m_store, contents, nullptr)
            ->Keys(std::make_unique<Restriction>(*Made(condition)).get(), nullptr);
    }

    std::optional<std::vector<MessageId>> Candidates(const SRestriction& restriction, ContentsKey contents,
                                                     size_t most = 1000000)
    {
        const std::optional<TextPlan> plan = MakeTextPlan(Restriction(restriction).Root());
        return plan ? Store().Texts().Candidates(*plan, contents, most) : std::nullopt;
    }
    bool UsesIndex(const SRestriction& restriction) { return Candidates(restriction, {Inbox, false}).has_value(); }

    /// A text of a restriction ends at its first zero: what comes after it is not asked.
    static TextCondition Cut(TextCondition condition)
    {
        condition.text = condition.text.c_str();
        for (TextCondition& child : condition.children)
        {
            child = Cut(child);
        }
        return condition;
    }

    /// How many of the restrictions the index narrows.
    int Compare(int count)
    {
        int narrowed = 0;
        const std::vector<TextModel> models = Models();
        for (int i = 0; i < count; ++i)
        {
            const TextCondition condition = Cut(m_random.Condition(models));
            const ContentsKey contents(m_random.Below(2) != 0 ? Inbox : Other, m_random.Below(5) == 0);
            const std::vector<RowKey> expected = Expected(condition, contents);
            EXPECT_EQ(Keys(condition, contents), expected) << "condition " << i << ", tag " << condition.tag;
            const auto candidates = Candidates(*Made(condition), contents);
            narrowed += candidates ? 1 : 0;
            if (candidates)
            {
                EXPECT_TRUE(std::includes(candidates->begin(), candidates->end(), expected.begin(), expected.end()))
                    << "condition " << i << ", tag " << condition.tag;
            }
        }
        return narrowed;
    }

    std::vector<std::string> Problems() { return Store().Texts().Problems(); }
    std::int64_t Number(const std::string& sql)
    {
        Query query(Store().Connection().Db(), sql);
        return query.Step() ? query.Number(0) : -1;
    }
    void Run(const std::string& sql) { Store().Connection().Db().Execute(sql.c_str()); }

    TextMaker m_random{20};
    std::map<MessageId, TextModel> m_models;
    std::deque<Wide> m_texts;
};

} // namespace zebstore::test
