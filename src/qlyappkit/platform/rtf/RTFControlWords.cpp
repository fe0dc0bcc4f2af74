#include <qlyappkit/platform/rtf/RTFControlWords_p.h>

#include <algorithm>
#include <array>

namespace qly::rtf {

namespace {

constexpr std::array<WordInfo, size_t(Word::Count)> kWords{{
#define QLY_RTF_INFO(id, name, kind) {name, Word::id, WordKind::kind},
    QLY_RTF_WORDS(QLY_RTF_INFO)
#undef QLY_RTF_INFO
}};

// The table sorted by name, for lookups by binary search.
const std::array<const WordInfo*, size_t(Word::Count)>& sortedWords()
{
    static const auto sorted = [] {
        std::array<const WordInfo*, size_t(Word::Count)> s{};
        for (size_t i = 0; i < kWords.size(); ++i)
            s[i] = &kWords[i];
        std::sort(s.begin(), s.end(), [](const WordInfo* a, const WordInfo* b) { return a->name < b->name; });
        return s;
    }();
    return sorted;
}

} // namespace

const WordInfo* lookupWord(std::string_view name)
{
    const auto& sorted = sortedWords();
    auto it = std::lower_bound(sorted.begin(), sorted.end(), name,
                               [](const WordInfo* info, std::string_view n) { return info->name < n; });
    if (it != sorted.end() && (*it)->name == name)
        return *it;
    return nullptr;
}

std::string_view wordName(Word word) { return kWords[size_t(word)].name; }

} // namespace qly::rtf
