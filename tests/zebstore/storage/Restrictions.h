// SRestriction trees written briefly; the pieces live as long as the maker.
#pragma once

#include "tests/zebstore/storage/Storage.h"

#include <deque>
#include <initializer_list>
#include <vector>

namespace zebstore::test
{

class RestrictionMaker
{
public:
    SRestriction* Property(ULONG relop, const SPropValue& value)
    {
        SRestriction* node = New(RES_PROPERTY);
        node->res.resProperty.relop = relop;
        node->res.resProperty.ulPropTag = value.ulPropTag;
        node->res.resProperty.lpProp = Keep(value);
        return node;
    }
    SRestriction* Content(ULONG fuzzy, const SPropValue& value)
    {
        SRestriction* node = New(RES_CONTENT);
        node->res.resContent.ulFuzzyLevel = fuzzy;
        node->res.resContent.ulPropTag = value.ulPropTag;
        node->res.resContent.lpProp = Keep(value);
        return node;
    }
    SRestriction* Exist(ULONG tag)
    {
        SRestriction* node = New(RES_EXIST);
        node->res.resExist.ulPropTag = tag;
        return node;
    }
    SRestriction* BitMask(ULONG tag, ULONG mask, ULONG relation)
    {
        SRestriction* node = New(RES_BITMASK);
        node->res.resBitMask.ulPropTag = tag;
        node->res.resBitMask.ulMask = mask;
        node->res.resBitMask.relBMR = relation;
        return node;
    }
    SRestriction* Size(ULONG relop, ULONG tag, ULONG size)
    {
        SRestriction* node = New(RES_SIZE);
        node->res.resSize.relop = relop;
        node->res.resSize.ulPropTag = tag;
        node->res.resSize.cb = size;
        return node;
    }
    SRestriction* CompareProps(ULONG relop, ULONG left, ULONG right)
    {
        SRestriction* node = New(RES_COMPAREPROPS);
        node->res.resCompareProps.relop = relop;
        node->res.resCompareProps.ulPropTag1 = left;
        node->res.resCompareProps.ulPropTag2 = right;
        return node;
    }
    SRestriction* Or(const std::vector<SRestriction*>& children) { return Many(RES_OR, children); }
    SRestriction* And(const std::vector<SRestriction*>& children) { return Many(RES_AND, children); }
    SRestriction* And(std::initializer_list<SRestriction*> children) { return Many(RES_AND, children); }
    SRestriction* Or(std::initializer_list<SRestriction*> children) { return Many(RES_OR, children); }
    SRestriction* Not(SRestriction* child)
    {
        SRestriction* node = New(RES_NOT);
        node->res.resNot.lpRes = child;
        return node;
    }
    SRestriction* Sub(ULONG table, SRestriction* child)
    {
        SRestriction* node = New(RES_SUBRESTRICTION);
        node->res.resSub.ulSubObject = table;
        node->res.resSub.lpRes = child;
        return node;
    }
    SRestriction* Comment(SRestriction* child)
    {
        SRestriction* node = New(RES_COMMENT);
        node->res.resComment.lpRes = child;
        return node;
    }
    SRestriction* New(ULONG kind)
    {
        m_nodes.emplace_back();
        std::memset(static_cast<void*>(&m_nodes.back()), 0, sizeof(SRestriction));
        m_nodes.back().rt = kind;
        return &m_nodes.back();
    }

private:
    SPropValue* Keep(const SPropValue& value)
    {
        m_values.push_back(value);
        return &m_values.back();
    }
    template <class Children>
    SRestriction* Many(ULONG kind, const Children& children)
    {
        m_arrays.emplace_back();
        for (const SRestriction* child : children)
        {
            m_arrays.back().push_back(*child);
        }
        SRestriction* node = New(kind);
        node->res.resAnd.cRes = static_cast<ULONG>(children.size());
        node->res.resAnd.lpRes = m_arrays.back().data();
        return node;
    }

    std::deque<SRestriction> m_nodes;
    std::deque<SPropValue> m_values;
    std::deque<std::vector<SRestriction>> m_arrays;
};

} // namespace zebstore::test
