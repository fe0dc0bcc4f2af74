#pragma once
// XQAggregateTextStorageComponent: what a text storage offers to be shown inside an aggregate text
// storage. The aggregate tells it when it joins and leaves, so that the storage knows whether some
// aggregate is showing it.
namespace qly {

class XQAggregateTextStorageComponent {
public:
    virtual ~XQAggregateTextStorageComponent() = default;

    /// Called by an aggregate that starts showing this storage.
    virtual void addToAggregateTextStorage() = 0;
    /// Called by an aggregate that stops showing this storage.
    virtual void removeFromAggregateTextStorage() = 0;
    /// True while at least one aggregate shows this storage.
    virtual bool isAggregateTextStorageComponent() const = 0;
};

} // namespace qly
