#pragma once
// The RTF interpreter: a Handler that builds attributed text from the token stream.
//
// State: a stack of group states (destination, character and paragraph formatting, \uc count).
// Nested groups that change nothing share one entry (its repeat count), so deep nesting costs no
// memory and nothing recurses on group depth. Text of the current paragraph is collected with its
// character runs and flushed into the result when the paragraph ends, because the paragraph style
// is known only then.
#include <QHash>
#include <QVector>
#include <memory>
#include <unordered_map>
#include <vector>

#include <qlyappkit/platform/rtf/RTFControlWords_p.h>
#include <qlyappkit/platform/rtf/RTFHandler_p.h>
#include <qlyappkit/platform/text/AttributedString.h>
#include <qlyappkit/platform/values/Color.h>
#include <qlyappkit/platform/values/ParagraphStyle.h>

namespace qly::rtf {

enum class Destination : std::uint8_t {
    Text, ///< document text (also list marker text and field results)
    Ignored, ///< words are read, text is dropped
    FontTable,
    ColorTable,
    Info,
    Author,
    FieldInstruction,
    ListTable,
    List,
    ListLevel,
    LevelText,
    ListOverrideTable,
    ListOverride,
    Upr,
};

struct CharFormat {
    int font = -1; ///< font number; -1 for the document's default font
    int halfPoints = 24;
    int underlineColor = 0, foreground = 0, background = 0;
    int baselineHalfPoints = 0;
    int kernTwips = 0;
    int link = -1; ///< index into the link targets
    std::uint8_t underline = 0, strike = 0;
    std::int8_t script = 0;
    bool bold = false, italic = false, hidden = false;
    friend bool operator==(const CharFormat&, const CharFormat&) = default;
};

struct CharFormatHash {
    size_t operator()(const CharFormat& f) const;
};

struct ParaFormat {
    TextAlignment alignment = NaturalTextAlignment;
    int firstIndent = 0, leftIndent = 0, rightIndent = 0;
    int spaceBefore = 0, spaceAfter = 0;
    int lineRule = 0; ///< \sl
    bool lineMultiple = false; ///< \slmult1
    int leading = 0, minHeight = -1, maxHeight = -1; ///< the explicit line-height words; -1 unset
    int list = 0, level = 0;
    int itap = -1; ///< -1 when not given
    bool inTable = false;
    int outlineLevel = -1;
    TextAlignment nextTabAlignment = LeftTextAlignment;
    QVector<TextTab> tabs;
    friend bool operator==(const ParaFormat&, const ParaFormat&) = default;
};

struct GroupState {
    Destination destination = Destination::Text;
    int unicodeSkip = 1;
    CharFormat chr;
    ParaFormat para;
    int repeat = 0; ///< further nested groups sharing this entry unchanged
};

class Interpreter final : public Handler {
public:
    Interpreter();
    ~Interpreter() override;

    void groupStart() override;
    void groupEnd() override;
    HandlerAction controlWord(std::string_view name, bool hasParameter, int parameter) override;
    void controlSymbol(char symbol) override;
    void text(std::string_view bytes) override;
    void hexByte(std::uint8_t byte) override;
    void binary(std::string_view bytes) override;
    void end() override;

    AttributedString result() const { return m_result; }
    QVariantMap documentAttributes() const;

private:
    struct FontEntry {
        QString name;
        int codePage = 0;
    };
    struct ListLevelDef {
        int numberFormat = 0;
        int startAt = 1;
        QString text; ///< \leveltext: length, then the template with level placeholders 0–8
    };
    struct ListDef {
        int id = 0;
        std::vector<ListLevelDef> levels;
    };
    struct CellDef {
        int width = 0, widthType = 0, background = 0;
    };
    struct TableLevel {
        std::shared_ptr<TextTable> table;
        int row = 0, column = 0;
    };
    struct Field {
        int depth = 0;
        QString instruction;
    };
    struct PendingRun {
        qsizetype start = 0;
        int format = 0; ///< index into m_formats
    };
    enum class ParagraphEnd { Paragraph, Cell, NestedCell };

    // ---- dispatch by kind of control word (RTFDispatch.cpp)
    HandlerAction dispatchDestination(Word word);
    void dispatchFlag(Word word, bool hasParameter, int parameter);
    void dispatchValue(Word word, bool hasParameter, int parameter);
    void dispatchSymbol(Word word);
    void dispatchDocumentValue(Word word, int parameter);
    void dispatchTableValue(Word word, int parameter);
    void dispatchListValue(Word word, int parameter);

    // ---- state
    const GroupState& state() const { return m_states.back(); }
    GroupState& mutableState();
    Destination destination() const { return m_states.back().destination; }
    bool isTextDestination() const;

    // ---- text
    int currentCodePage() const;
    void flushBytes();
    void appendDecoded(QStringView text);
    void appendParagraphText(QStringView text);
    void appendCharacter(char16_t c);
    void endParagraph(ParagraphEnd kind);
    void finishFontEntry();
    void finishColor();

    // ---- attributes
    int formatIndex(const CharFormat& format);
    Attributes characterAttributes(const CharFormat& format) const;
    QVector<TextBlock> currentBlocks(int depth);
    QVector<TextList> textListsFor(int list, int level);
    TextList textListForLevel(const ListDef& list, int level) const;
    ParagraphStyle paragraphStyle(const ParaFormat& para, const QVector<TextBlock>& blocks);
    QString linkTargetFromInstruction(const QString& instruction) const;

    AttributedString m_result;
    std::vector<GroupState> m_states;
    int m_depth = 0;
    bool m_starPending = false;
    qsizetype m_skipUnits = 0;

    // Pending 8-bit text, decoded as a whole so that multi-byte code pages come out right.
    QByteArray m_pendingBytes;
    int m_pendingCodePage = 0;

    // Current paragraph.
    QString m_paraText;
    std::vector<PendingRun> m_paraRuns;
    CharFormat m_runFormat;

    // Interned character formats and their attributes, and finished attribute dictionaries, so
    // equal runs share one dictionary.
    std::vector<CharFormat> m_formats;
    std::vector<Attributes> m_formatAttributes;
    std::unordered_map<CharFormat, int, CharFormatHash> m_formatIndex;
    QHash<quint64, Attributes> m_runAttributes;
    ParaFormat m_lastPara;
    QVector<TextBlock> m_lastBlocks;
    int m_lastStyleIndex = -1;
    QVariant m_lastStyle;

    // Document.
    int m_documentCodePage;
    int m_defaultFont = 0;
    QHash<int, FontEntry> m_fonts;
    bool m_fontEntryOpen = false;
    int m_fontNumber = 0, m_fontCharset = -1, m_fontCodePage = 0;
    QString m_fontName;
    std::vector<std::optional<Color>> m_colors;
    int m_red = 0, m_green = 0, m_blue = 0;
    bool m_colorHasComponents = false;
    QString m_author;
    bool m_hasAuthor = false;
    QVariantMap m_documentAttributes;
    int m_paperWidth = -1, m_paperHeight = -1;
    Destination m_uprReturn = Destination::Text;

    // Lists.
    std::vector<ListDef> m_lists;
    QHash<int, int> m_overrides; ///< \ls number → list id
    QHash<int, int> m_listIndex; ///< list id → index into m_lists
    int m_overrideLs = 0, m_overrideListId = 0;
    QHash<quint64, QVector<TextList>> m_textLists;

    // Tables and fields.
    std::vector<CellDef> m_rowCells;
    CellDef m_pendingCell;
    std::vector<TableLevel> m_tables;
    std::vector<Field> m_fields;
    QStringList m_links;
    QHash<QString, int> m_linkIndex;
};

} // namespace qly::rtf
