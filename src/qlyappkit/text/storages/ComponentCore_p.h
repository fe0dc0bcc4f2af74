#pragma once
// The component-mirroring core shared by XQAggregateTextStorage and XQAggregatingTextStorage. Not
// installed.
//
// An aggregate shows its components' texts one after another in its own text (the owner). In front
// of each text may stand a head (the aggregate's title, then a one-character gap: the newline after
// it), and after it a tail (a separator). The core keeps what the two aggregates share:
//  - the components, observed as TextStorageObservers, with their word counters;
//  - where each lies in the owner's text: componentRanges (head, gap, text and tail, contiguous from
//    0), textRanges and, while the owner shows heads, headRanges (the head without its gap);
//  - the re-entrancy guards, held by scopes (Holding): `forwarding` while the owner writes an edit
//    into a component, `mirroring` while a component's own edit is copied into the owner;
//  - the pending mirrored edits: what a component reported while an edit was being forwarded to it
//    (its attribute fixing may reach beyond the forwarded edit), copied back by applyPendingSyncs(),
//    which also mirrors the edit into any other place that shows the same storage.
//
// Invariants (checkInvariants()): one range of each kind per component; the component ranges tile the
// owner's text from 0; each text range starts after its head and gap, lies inside its component range
// and has its storage's length; each component's text equals its slice of the owner's text,
// attributes included; every component is observed; the word total is the sum of the counters (0 when
// a component does not count words); between operations no guard is held and nothing is pending.
#include <QString>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include <qlyappkit/platform/text/TextStorage.h>
#include <qlyappkit/text/storages/StorageSupport_p.h>

namespace qly {

class XQWordCountingTextStorage;

namespace storage_detail {

/// Holds a re-entrancy flag for the lifetime of its scope. The flag is a depth, so holds nest and the
/// flag drops only when the outermost one ends; nothing has to be flipped back by hand.
class [[nodiscard]] Holding {
public:
    explicit Holding(int& depth) : m_depth(depth) { ++m_depth; }
    ~Holding() { --m_depth; }
    Holding(const Holding&) = delete;
    Holding& operator=(const Holding&) = delete;

private:
    int& m_depth;
};

/// Sets a variable for the lifetime of its scope and restores the previous value after.
template <typename T> class [[nodiscard]] ScopedValue {
public:
    ScopedValue(T& variable, T value) : m_variable(variable), m_previous(std::exchange(variable, std::move(value))) { }
    ~ScopedValue() { m_variable = std::move(m_previous); }
    ScopedValue(const ScopedValue&) = delete;
    ScopedValue& operator=(const ScopedValue&) = delete;

private:
    T& m_variable;
    T m_previous;
};

/// The lengths around a component's text, as the owner lays it out.
struct ComponentParts {
    qsizetype head = 0; ///< the title (or nothing)
    qsizetype headGap = 0; ///< what follows the head (the newline after a title)
    qsizetype tail = 0; ///< the separator after the text
};

class ComponentCoreBase {
public:
    enum class Part { Head, Text };
    using PartsFunction = std::function<ComponentParts(qsizetype index)>;

    /// owner is the aggregate; backing its text (written directly for copied-back attribute fixes).
    ComponentCoreBase(TextStorage& owner, AttributedString& backing);
    virtual ~ComponentCoreBase();
    ComponentCoreBase(const ComponentCoreBase&) = delete;
    ComponentCoreBase& operator=(const ComponentCoreBase&) = delete;

    virtual qsizetype count() const = 0;
    virtual TextStorage& storage(qsizetype index) const = 0;
    /// The first component showing storage, or NotFound.
    qsizetype indexOfStorage(const TextStorage* storage) const;

    // ---- ranges
    const std::vector<Range>& componentRanges() const { return m_componentRanges; }
    const std::vector<Range>& textRanges() const { return m_textRanges; }
    /// Empty while the owner shows no heads.
    const std::vector<Range>& headRanges() const { return m_headRanges; }
    bool keepsHeads() const { return m_keepsHeads; }
    /// Lays every component out again from its parts and its storage's length (heads kept when
    /// keepHeads), and takes every component's word count afresh.
    void relayout(const PartsFunction& parts, bool keepHeads);
    /// Moves the ranges after an edit of delta characters inside component index's head or text,
    /// and, for its text, takes its new word count. Costs one step per later component.
    void shift(qsizetype index, Part part, qsizetype delta);
    /// Index of the first of ranges (sorted, contiguous) that ends after location, or their count.
    static qsizetype firstRangeEndingAfter(const std::vector<Range>& ranges, qsizetype location);

    // ---- words
    /// The sum of the components' counts, or 0 when one of them does not count words.
    qsizetype wordTotal() const { return m_allCount ? m_words : 0; }
    bool allComponentsCount() const { return m_allCount; }

    // ---- routing
    /// True while the owner writes an edit into a component.
    bool isForwarding() const { return m_forwarding > 0; }
    /// True while a component's own edit is copied into the owner.
    bool isMirroring() const { return m_mirroring > 0; }
    /// The component whose edit is being mirrored (NotFound otherwise).
    qsizetype mirroredIndex() const { return m_mirroredIndex; }
    /// Runs edit(the component's storage, the component's range in its own coordinates) with the
    /// forwarding guard held; range is in the owner's coordinates and lies in component index's text.
    void forward(qsizetype index, Range range, const std::function<void(TextStorage&, Range)>& edit);
    /// Copies into the owner what components changed beyond the edits forwarded to them.
    void applyPendingSyncs();

    /// Checks the invariants in the class comment; on failure tells which in *failure.
    bool checkInvariants(QString* failure = nullptr) const;

protected:
    void componentInserted(qsizetype index);
    void componentErased(qsizetype index);
    void componentsReplaced();
    void observe(TextStorage& storage);
    /// Stops observing storage unless another component still shows it.
    void stopObservingUnlessShown(TextStorage& storage);

private:
    struct PendingSync {
        TextStorage* component;
        qsizetype forwardedIndex; ///< the place the edit was forwarded from
        int mask;
        Range range;
        qsizetype delta;
    };
    void componentEdited(TextStorage& component, int mask, Range editedRange, qsizetype delta);
    void mirror(qsizetype index, int mask, Range editedRange, qsizetype delta);
    void takeWordCount(qsizetype index);

    TextStorage& m_owner;
    AttributedString& m_backing;
    std::unique_ptr<EditForwardingObserver> m_observer;
    std::vector<Range> m_componentRanges, m_textRanges, m_headRanges;
    bool m_keepsHeads = false;
    std::vector<const XQWordCountingTextStorage*> m_counters; ///< per component; null when it counts no words
    std::vector<qsizetype> m_componentWords; ///< each component's count as last taken
    qsizetype m_words = 0;
    bool m_allCount = true;
    int m_forwarding = 0;
    int m_mirroring = 0;
    qsizetype m_mirroredIndex = NotFound;
    qsizetype m_forwardedIndex = NotFound;
    std::vector<PendingSync> m_pendingSyncs;
};

/// The core over a list of components of one type; storageOf(component) gives a component's storage.
template <typename Component> class ComponentCore final : public ComponentCoreBase {
public:
    using ComponentCoreBase::ComponentCoreBase;
    ~ComponentCore() override { stopObservingAll(); }

    qsizetype count() const override { return qsizetype(m_components.size()); }
    TextStorage& storage(qsizetype index) const override { return *storageOf(m_components[size_t(index)]); }
    const std::vector<Component>& components() const { return m_components; }
    Component& component(qsizetype index) { return m_components[size_t(index)]; }
    const Component& component(qsizetype index) const { return m_components[size_t(index)]; }

    /// Takes a new list (every storage non-null): the old components are no longer heard, the new
    /// ones are. The ranges are left for relayout().
    void setComponents(std::vector<Component> components)
    {
        stopObservingAll();
        m_components = std::move(components);
        componentsReplaced();
        for (const Component& c : m_components)
            observe(*storageOf(c));
    }
    void insert(qsizetype index, Component component)
    {
        m_components.insert(m_components.begin() + index, std::move(component));
        componentInserted(index);
        observe(storage(index));
    }
    void erase(qsizetype index)
    {
        const Component removed = std::move(m_components[size_t(index)]);
        m_components.erase(m_components.begin() + index);
        componentErased(index);
        stopObservingUnlessShown(*storageOf(removed));
    }
    void stopObservingAll()
    {
        const std::vector<Component> old = std::exchange(m_components, {});
        componentsReplaced();
        for (const Component& c : old)
            stopObservingUnlessShown(*storageOf(c));
    }

private:
    std::vector<Component> m_components;
};

} // namespace storage_detail
} // namespace qly
