#include <qlyappkit/interchange/package/PackageRTFGroups_p.h>

#include <algorithm>
#include <climits>

#include <qlyappkit/interchange/package/PackagePictureGroups.h>
#include <qlyappkit/interchange/package/StyleIdentifierGroups.h>

namespace qly::packagegroups {

namespace {

enum class Word {
    Other,
    Pict,
    ShapePict,
    Fallback,
    Object,
    PDF,
    PDFFileName,
    PictureFileName,
    JPEG,
    PixelWidth,
    PixelHeight,
    GoalWidth,
    GoalHeight,
    ScaleX,
    ScaleY,
    Binary,
    ParagraphStyleID,
    CharacterStyleID,
};

Word wordNamed(QByteArrayView name)
{
    static const std::pair<const char*, Word> words[] = {
        {PackageRTFPictWord, Word::Pict},
        {PackageRTFShapePictWord, Word::ShapePict},
        {PackageRTFFallbackPictWord, Word::Fallback},
        {PackageRTFObjectWord, Word::Object},
        {PackageRTFPDFWord, Word::PDF},
        {PackageRTFPDFFileNameWord, Word::PDFFileName},
        {PackageRTFPictureFileNameWord, Word::PictureFileName},
        {PackageRTFJPEGWord, Word::JPEG},
        {PackageRTFPixelWidthWord, Word::PixelWidth},
        {PackageRTFPixelHeightWord, Word::PixelHeight},
        {PackageRTFGoalWidthWord, Word::GoalWidth},
        {PackageRTFGoalHeightWord, Word::GoalHeight},
        {PackageRTFScaleXWord, Word::ScaleX},
        {PackageRTFScaleYWord, Word::ScaleY},
        {PackageRTFBinaryWord, Word::Binary},
        {PackageRTFParagraphStyleIDWord, Word::ParagraphStyleID},
        {PackageRTFCharacterStyleIDWord, Word::CharacterStyleID},
    };
    for (const auto& [spelling, word] : words) {
        if (name == spelling)
            return word;
    }
    return Word::Other;
}

bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
bool isDigit(char c) { return c >= '0' && c <= '9'; }
bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

QByteArrayView trimmed(QByteArrayView text)
{
    qsizetype from = 0, to = text.size();
    while (from < to && isBlank(text[from]))
        ++from;
    while (to > from && isBlank(text[to - 1]))
        --to;
    return text.sliced(from, to - from);
}

class Scanner {
public:
    explicit Scanner(QByteArrayView rtf) : m_rtf(rtf) { }

    std::vector<Group> scan()
    {
        const qsizetype n = m_rtf.size();
        qsizetype i = 0;
        while (i < n) {
            const char c = m_rtf[i];
            if (c == '{') {
                openGroup(i);
                ++i;
            } else if (c == '}') {
                closeGroup(i);
                ++i;
            } else if (c == '\\') {
                i = control(i);
            } else {
                qsizetype j = i + 1;
                while (j < n && m_rtf[j] != '{' && m_rtf[j] != '}' && m_rtf[j] != '\\')
                    ++j;
                if (m_active)
                    text(i, j);
                i = j;
            }
        }
        if (m_active) {
            m_active->end = n;
            m_active->closed = false;
            if (isStyle(m_active->kind))
                m_active->value = m_rtf.sliced(m_valueStart);
            m_groups.push_back(*m_active);
        }
        return std::move(m_groups);
    }

private:
    static bool isStyle(GroupKind kind)
    {
        return kind == GroupKind::ParagraphStyleID || kind == GroupKind::CharacterStyleID;
    }
    size_t depth() const { return m_starts.size(); }

    void openGroup(qsizetype at) { m_starts.push_back(at); }

    void closeGroup(qsizetype at)
    {
        if (m_starts.empty())
            return; // a stray closing brace
        const size_t closing = depth();
        if (m_active) {
            if (m_nameDepth == closing) {
                const QByteArrayView name = m_rtf.sliced(m_nameStart, at - m_nameStart);
                (m_nameIsPDF ? m_active->pdfFileName : m_active->fileName) = name;
                m_nameDepth = 0;
            }
            if (m_pdfDepth == closing)
                m_pdfDepth = 0;
            if (m_pictDepth == closing)
                m_pictDepth = 0;
            if (m_activeDepth == closing) {
                m_active->end = at + 1;
                if (isStyle(m_active->kind))
                    m_active->value = m_rtf.sliced(m_valueStart, at - m_valueStart);
                m_groups.push_back(*m_active);
                m_active.reset();
            }
        }
        m_starts.pop_back();
        while (!m_shapeFrames.empty() && m_shapeFrames.back() >= closing - 1)
            m_shapeFrames.pop_back();
        while (!m_objectFrames.empty() && m_objectFrames.back() >= closing - 1)
            m_objectFrames.pop_back();
    }

    // Reads the control word or symbol at `at`; returns where the next token starts.
    qsizetype control(qsizetype at)
    {
        const qsizetype n = m_rtf.size();
        if (at + 1 >= n)
            return n;
        if (!isLetter(m_rtf[at + 1]))
            return m_rtf[at + 1] == '\'' ? std::min(n, at + 4) : at + 2;
        qsizetype j = at + 1;
        while (j < n && isLetter(m_rtf[j]))
            ++j;
        const QByteArrayView name = m_rtf.sliced(at + 1, j - at - 1);
        bool negative = false, hasParameter = false;
        long long parameter = 0;
        if (j + 1 < n && m_rtf[j] == '-' && isDigit(m_rtf[j + 1])) {
            negative = true;
            ++j;
        }
        while (j < n && isDigit(m_rtf[j])) {
            hasParameter = true;
            if (parameter <= INT_MAX)
                parameter = parameter * 10 + (m_rtf[j] - '0');
            ++j;
        }
        if (j < n && m_rtf[j] == ' ')
            ++j;
        const int value = int(std::clamp(negative ? -parameter : parameter, (long long)INT_MIN, (long long)INT_MAX));
        const Word word = wordNamed(name);
        if (word == Word::Binary) {
            // "\binN" is followed by N bytes of data, which may hold any byte (braces included).
            const qsizetype length = hasParameter && value > 0 ? std::min(qsizetype(value), n - j) : 0;
            if (m_active && m_active->kind == GroupKind::Picture && depth() == m_pictDepth) {
                m_active->data = m_rtf.sliced(j, length);
                m_active->binaryData = true;
            }
            return j + length;
        }
        controlWord(word, hasParameter, value, j);
        return j;
    }

    void controlWord(Word word, bool hasParameter, int value, qsizetype after)
    {
        if (m_starts.empty())
            return;
        const size_t frame = depth() - 1;
        if (word == Word::ShapePict && (m_shapeFrames.empty() || m_shapeFrames.back() != frame))
            m_shapeFrames.push_back(frame);
        if (word == Word::Object && (m_objectFrames.empty() || m_objectFrames.back() != frame))
            m_objectFrames.push_back(frame);
        if (m_active) {
            insideGroup(word, hasParameter, value, after);
            return;
        }
        switch (word) {
        case Word::Pict: {
            // The picture's group widens to the "\shppict" group around it, and then to an "\object" group
            // around that.
            size_t widest = frame;
            if (!m_shapeFrames.empty())
                widest = m_shapeFrames.back();
            for (auto it = m_objectFrames.rbegin(); it != m_objectFrames.rend(); ++it) {
                if (*it <= widest) {
                    widest = *it;
                    break;
                }
            }
            begin(GroupKind::Picture, widest);
            m_pictDepth = depth();
            break;
        }
        case Word::PDF:
            begin(GroupKind::PDF, frame);
            m_active->hasPDF = true;
            m_pdfDepth = depth();
            break;
        case Word::Fallback:
            begin(GroupKind::Fallback, frame);
            break;
        case Word::ParagraphStyleID:
        case Word::CharacterStyleID:
            begin(word == Word::ParagraphStyleID ? GroupKind::ParagraphStyleID : GroupKind::CharacterStyleID, frame);
            m_valueStart = after;
            break;
        default:
            break;
        }
    }

    void insideGroup(Word word, bool hasParameter, int value, qsizetype after)
    {
        if (m_active->kind != GroupKind::Picture && m_active->kind != GroupKind::PDF)
            return;
        const bool inPict = depth() == m_pictDepth;
        switch (word) {
        case Word::PictureFileName:
        case Word::PDFFileName:
            if (m_nameDepth == 0) {
                m_nameDepth = depth();
                m_nameStart = after;
                m_nameIsPDF = word == Word::PDFFileName;
            }
            break;
        case Word::PDF:
            if (m_pdfDepth == 0 && !m_active->hasPDF) {
                m_active->hasPDF = true;
                m_pdfDepth = depth();
            }
            break;
        case Word::JPEG:
            if (inPict)
                m_active->jpeg = true;
            break;
        case Word::PixelWidth:
        case Word::PixelHeight:
        case Word::GoalWidth:
        case Word::GoalHeight:
        case Word::ScaleX:
        case Word::ScaleY:
            if (inPict && hasParameter) {
                int* fields[] = {&m_active->pixelWidth, &m_active->pixelHeight, &m_active->goalWidth,
                                 &m_active->goalHeight, &m_active->scaleX,      &m_active->scaleY};
                *fields[int(word) - int(Word::PixelWidth)] = value;
            }
            break;
        default:
            break;
        }
    }

    void begin(GroupKind kind, size_t frame)
    {
        Group group;
        group.kind = kind;
        group.start = m_starts[frame];
        // Groups found earlier inside the widened group go with it.
        while (!m_groups.empty() && m_groups.back().start >= group.start)
            m_groups.pop_back();
        m_active = group;
        m_activeDepth = frame + 1;
        m_pictDepth = m_pdfDepth = m_nameDepth = 0;
    }

    void text(qsizetype from, qsizetype to)
    {
        const QByteArrayView run = trimmed(m_rtf.sliced(from, to - from));
        if (run.isEmpty())
            return;
        if (m_nameDepth != 0 && depth() >= m_nameDepth)
            return; // a file name
        if (m_active->kind == GroupKind::Picture && depth() == m_pictDepth) {
            m_active->data = run;
            m_active->binaryData = false;
        }
        if (m_pdfDepth != 0 && depth() >= m_pdfDepth)
            m_active->pdfData = run;
    }

    QByteArrayView m_rtf;
    std::vector<qsizetype> m_starts; // the "{" of each open group, outermost first
    std::vector<size_t> m_shapeFrames, m_objectFrames; // open groups holding those words, as indexes
    std::vector<Group> m_groups;
    std::optional<Group> m_active;
    size_t m_activeDepth = 0, m_pictDepth = 0, m_pdfDepth = 0, m_nameDepth = 0; // 0: none
    qsizetype m_nameStart = 0, m_valueStart = 0;
    bool m_nameIsPDF = false;
};

} // namespace

std::vector<Group> scanPackageGroups(QByteArrayView rtf) { return Scanner(rtf).scan(); }

} // namespace qly::packagegroups
