// The interpreter's dispatch: control words by kind (destinations, flags, values, symbols) and
// control symbols.
#include <qlyappkit/platform/rtf/RTFInterpreter_p.h>

#include <algorithm>
#include <cstdint>
#include <limits>

#include <qlyappkit/platform/rtf/RTFCodePages_p.h>
#include <qlyappkit/platform/rtf/RTFListFormats_p.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>

namespace qly::rtf {

namespace {

constexpr double TwipsPerPoint = 20.0;
constexpr int TwipsPerQuarterPoint = 5;
constexpr int DefaultHalfPoints = 24;
constexpr int MaxHalfPoints = 3276; // 1638 pt, the largest size word processors accept
constexpr int DefaultRaiseHalfPoints = 6;
constexpr int TwipsLimit = 31680 * 20; // 22 inches scaled generously: larger indents are noise
constexpr int MaxTabStops = 256;

int clampTwips(int value) { return std::clamp(value, -TwipsLimit, TwipsLimit); }

std::uint8_t underlineFor(Word word)
{
    switch (word) {
    case Word::UlDb:
        return 9;
    case Word::UlTh:
        return 2;
    default:
        return 1;
    }
}

} // namespace

HandlerAction Interpreter::controlWord(std::string_view name, bool hasParameter, int parameter)
{
    flushBytes();
    const bool starred = m_starPending;
    m_starPending = false;
    if (m_skipUnits > 0) {
        // A control word stands for one character of the fallback text after "\u".
        --m_skipUnits;
        return HandlerAction::Continue;
    }
    const WordInfo* info = lookupWord(name);
    if (!info)
        return starred ? HandlerAction::SkipGroup : HandlerAction::Continue;
    switch (info->kind) {
    case WordKind::Destination:
        return dispatchDestination(info->word);
    case WordKind::SkipDestination:
        return HandlerAction::SkipGroup;
    case WordKind::Flag:
    case WordKind::Toggle:
        if (starred)
            return HandlerAction::SkipGroup;
        dispatchFlag(info->word, hasParameter, parameter);
        break;
    case WordKind::Value:
        if (starred)
            return HandlerAction::SkipGroup;
        dispatchValue(info->word, hasParameter, parameter);
        break;
    case WordKind::Symbol:
        if (starred)
            return HandlerAction::SkipGroup;
        dispatchSymbol(info->word);
        break;
    }
    return HandlerAction::Continue;
}

HandlerAction Interpreter::dispatchDestination(Word word)
{
    const Destination current = destination();
    auto enter = [this](Destination d) { mutableState().destination = d; };
    switch (word) {
    case Word::FontTable:
        enter(Destination::FontTable);
        break;
    case Word::ColorTable:
        m_colors.clear();
        enter(Destination::ColorTable);
        break;
    case Word::Info:
        enter(Destination::Info);
        break;
    case Word::Author:
        if (current != Destination::Info)
            return HandlerAction::SkipGroup;
        m_author.clear();
        m_hasAuthor = true;
        enter(Destination::Author);
        break;
    case Word::Field:
        m_fields.push_back(Field{m_depth, {}});
        break;
    case Word::FldInst:
        if (m_fields.empty())
            return HandlerAction::SkipGroup;
        enter(Destination::FieldInstruction);
        break;
    case Word::FldRslt: {
        enter(Destination::Text);
        if (!m_fields.empty()) {
            const QString target = linkTargetFromInstruction(m_fields.back().instruction);
            if (!target.isEmpty()) {
                auto found = m_linkIndex.constFind(target);
                if (found == m_linkIndex.constEnd()) {
                    found = m_linkIndex.insert(target, int(m_links.size()));
                    m_links.append(target);
                }
                mutableState().chr.link = *found;
            }
        }
        break;
    }
    case Word::ListTable:
        enter(Destination::ListTable);
        break;
    case Word::List:
        if (current != Destination::ListTable)
            return HandlerAction::SkipGroup;
        m_lists.emplace_back();
        enter(Destination::List);
        break;
    case Word::ListLevel:
        if (current != Destination::List || m_lists.empty())
            return HandlerAction::SkipGroup;
        m_lists.back().levels.emplace_back();
        enter(Destination::ListLevel);
        break;
    case Word::LevelText:
        if (current != Destination::ListLevel)
            return HandlerAction::SkipGroup;
        enter(Destination::LevelText);
        break;
    case Word::LevelNumbers:
        return HandlerAction::SkipGroup;
    case Word::ListOverrideTable:
        enter(Destination::ListOverrideTable);
        break;
    case Word::ListOverride:
        if (current != Destination::ListOverrideTable)
            return HandlerAction::SkipGroup;
        m_overrideLs = m_overrideListId = 0;
        enter(Destination::ListOverride);
        break;
    case Word::ListText:
    case Word::PnText:
        // Marker text that other readers show in front of list items: it is part of the text.
        enter(Destination::Text);
        break;
    case Word::Upr:
        m_uprReturn = current;
        enter(Destination::Upr);
        break;
    case Word::Ud:
        enter(m_uprReturn);
        break;
    case Word::NestTableProps:
        enter(Destination::Ignored);
        break;
    default:
        break;
    }
    return HandlerAction::Continue;
}

void Interpreter::dispatchFlag(Word word, bool hasParameter, int parameter)
{
    const bool on = !hasParameter || parameter != 0;
    switch (word) {
    // Document.
    case Word::Ansi:
        m_documentCodePage = DefaultCodePage;
        return;
    case Word::Mac:
        m_documentCodePage = 10000;
        return;
    case Word::Pc:
        m_documentCodePage = 437;
        return;
    case Word::Pca:
        m_documentCodePage = 850;
        return;
    // Characters.
    case Word::Plain: {
        CharFormat& chr = mutableState().chr;
        const int link = chr.link;
        chr = CharFormat{};
        chr.link = link;
        return;
    }
    case Word::B:
        mutableState().chr.bold = on;
        return;
    case Word::I:
        mutableState().chr.italic = on;
        return;
    case Word::Hidden:
        mutableState().chr.hidden = on;
        return;
    case Word::Ul:
        mutableState().chr.underline = on ? 1 : 0;
        return;
    case Word::UlNone:
        mutableState().chr.underline = 0;
        return;
    case Word::UlDb:
    case Word::UlTh:
    case Word::UlW:
    case Word::UlD:
    case Word::UlDash:
        mutableState().chr.underline = on ? underlineFor(word) : 0;
        return;
    case Word::Strike:
        mutableState().chr.strike = on ? 1 : 0;
        return;
    case Word::StrikeD:
        mutableState().chr.strike = on ? 9 : 0;
        return;
    case Word::Super:
        mutableState().chr.script = 1;
        return;
    case Word::Sub:
        mutableState().chr.script = -1;
        return;
    case Word::NoSuperSub:
        mutableState().chr.script = 0;
        return;
    // Paragraphs.
    case Word::Pard:
        mutableState().para = ParaFormat{};
        return;
    case Word::Ql:
        mutableState().para.alignment = LeftTextAlignment;
        return;
    case Word::Qr:
        mutableState().para.alignment = RightTextAlignment;
        return;
    case Word::Qc:
        mutableState().para.alignment = CenterTextAlignment;
        return;
    case Word::Qj:
    case Word::Qd:
        mutableState().para.alignment = JustifiedTextAlignment;
        return;
    case Word::Tqr:
        mutableState().para.nextTabAlignment = RightTextAlignment;
        return;
    case Word::Tqc:
        mutableState().para.nextTabAlignment = CenterTextAlignment;
        return;
    case Word::Tqdec:
        mutableState().para.nextTabAlignment = RightTextAlignment;
        return;
    case Word::InTbl:
        mutableState().para.inTable = true;
        return;
    case Word::Trowd:
        if (destination() == Destination::Text) {
            m_rowCells.clear();
            m_pendingCell = CellDef{};
        }
        return;
    default:
        return;
    }
}

void Interpreter::dispatchValue(Word word, bool hasParameter, int parameter)
{
    switch (word) {
    case Word::AnsiCpg:
    case Word::Deff:
    case Word::PaperW:
    case Word::PaperH:
    case Word::MargL:
    case Word::MargR:
    case Word::MargT:
    case Word::MargB:
    case Word::ViewKind:
    case Word::FCharset:
    case Word::Cpg:
    case Word::Red:
    case Word::Green:
    case Word::Blue:
        if (hasParameter)
            dispatchDocumentValue(word, parameter);
        return;
    case Word::CellX:
    case Word::ClWWidth:
    case Word::ClFtsWidth:
    case Word::ClCbPat:
    case Word::Itap:
        dispatchTableValue(word, hasParameter ? parameter : 0);
        return;
    case Word::ListId:
    case Word::LevelNfc:
    case Word::LevelNfcN:
    case Word::LevelStartAt:
    case Word::Ls:
    case Word::Ilvl:
        if (hasParameter)
            dispatchListValue(word, parameter);
        return;
    default:
        break;
    }

    const int value = hasParameter ? parameter : 0;
    switch (word) {
    // Characters.
    case Word::F:
        if (destination() == Destination::FontTable) {
            if (m_fontEntryOpen)
                finishFontEntry();
            m_fontEntryOpen = true;
            m_fontNumber = value;
            m_fontCharset = -1;
            m_fontCodePage = 0;
            m_fontName.clear();
        } else {
            mutableState().chr.font = value;
        }
        return;
    case Word::Fs:
        mutableState().chr.halfPoints = value > 0 ? std::min(value, MaxHalfPoints) : DefaultHalfPoints;
        return;
    case Word::Cf:
        mutableState().chr.foreground = value;
        return;
    case Word::Cb:
    case Word::ChCbPat:
    case Word::Highlight:
        mutableState().chr.background = value;
        return;
    case Word::UlC:
        mutableState().chr.underlineColor = value;
        return;
    case Word::Up:
        mutableState().chr.baselineHalfPoints =
            hasParameter ? std::clamp(value, -MaxHalfPoints, MaxHalfPoints) : DefaultRaiseHalfPoints;
        return;
    case Word::Dn:
        mutableState().chr.baselineHalfPoints =
            hasParameter ? -std::clamp(value, -MaxHalfPoints, MaxHalfPoints) : -DefaultRaiseHalfPoints;
        return;
    case Word::Expnd:
        mutableState().chr.kernTwips = clampTwips(value) * TwipsPerQuarterPoint;
        return;
    case Word::ExpndTw:
        mutableState().chr.kernTwips = clampTwips(value);
        return;
    // Paragraphs.
    case Word::Fi:
        mutableState().para.firstIndent = clampTwips(value);
        return;
    case Word::Li:
    case Word::Lin:
        mutableState().para.leftIndent = clampTwips(value);
        return;
    case Word::Ri:
    case Word::Rin:
        mutableState().para.rightIndent = clampTwips(value);
        return;
    case Word::Sb:
        mutableState().para.spaceBefore = clampTwips(value);
        return;
    case Word::Sa:
        mutableState().para.spaceAfter = clampTwips(value);
        return;
    case Word::Sl:
        mutableState().para.lineRule = clampTwips(value);
        return;
    case Word::SlMult:
        mutableState().para.lineMultiple = value != 0;
        return;
    case Word::LineSpacing:
        mutableState().para.leading = std::max(0, clampTwips(value));
        return;
    case Word::MinLineHeight:
        mutableState().para.minHeight = std::max(0, clampTwips(value));
        return;
    case Word::MaxLineHeight:
        mutableState().para.maxHeight = std::max(0, clampTwips(value));
        return;
    case Word::Tx: {
        ParaFormat& para = mutableState().para;
        if (para.tabs.size() < MaxTabStops)
            para.tabs.append(TextTab{para.nextTabAlignment, clampTwips(value) / TwipsPerPoint});
        para.nextTabAlignment = LeftTextAlignment;
        return;
    }
    case Word::Tb:
        mutableState().para.nextTabAlignment = LeftTextAlignment;
        return;
    case Word::OutlineLevel:
        mutableState().para.outlineLevel = value;
        return;
    case Word::Uc:
        mutableState().unicodeSkip = std::max(0, value);
        return;
    case Word::U: {
        if (!hasParameter)
            return;
        // Sixteen-bit values, written signed by most writers and unsigned by some; a value in neither
        // range names no character.
        const bool sixteenBits =
            value >= std::numeric_limits<std::int16_t>::min() && value <= std::numeric_limits<std::uint16_t>::max();
        appendCharacter(sixteenBits ? char16_t(value) : char16_t(QChar::ReplacementCharacter));
        m_skipUnits = state().unicodeSkip;
        return;
    }
    default:
        return;
    }
}

void Interpreter::dispatchDocumentValue(Word word, int value)
{
    const auto points = [](int twips) { return twips / TwipsPerPoint; };
    switch (word) {
    case Word::AnsiCpg:
        if (value > 0)
            m_documentCodePage = value;
        return;
    case Word::Deff:
        m_defaultFont = value;
        return;
    case Word::PaperW:
        if (value > 0)
            m_paperWidth = value;
        return;
    case Word::PaperH:
        if (value > 0)
            m_paperHeight = value;
        return;
    case Word::MargL:
        m_documentAttributes.insert(LeftMarginDocumentAttribute, points(value));
        return;
    case Word::MargR:
        m_documentAttributes.insert(RightMarginDocumentAttribute, points(value));
        return;
    case Word::MargT:
        m_documentAttributes.insert(TopMarginDocumentAttribute, points(value));
        return;
    case Word::MargB:
        m_documentAttributes.insert(BottomMarginDocumentAttribute, points(value));
        return;
    case Word::ViewKind:
        m_documentAttributes.insert(ViewModeDocumentAttribute, value);
        return;
    case Word::FCharset:
        if (destination() == Destination::FontTable)
            m_fontCharset = value;
        return;
    case Word::Cpg:
        if (destination() == Destination::FontTable)
            m_fontCodePage = value;
        return;
    case Word::Red:
    case Word::Green:
    case Word::Blue:
        if (destination() != Destination::ColorTable)
            return;
        (word == Word::Red ? m_red : word == Word::Green ? m_green : m_blue) = std::clamp(value, 0, 255);
        m_colorHasComponents = true;
        return;
    default:
        return;
    }
}

void Interpreter::dispatchTableValue(Word word, int value)
{
    if (word == Word::Itap) {
        mutableState().para.itap = std::clamp(value, 0, 1 << 16);
        return;
    }
    // Row definitions of nested tables (read inside their properties group) do not describe the
    // outermost row.
    if (destination() != Destination::Text)
        return;
    switch (word) {
    case Word::CellX:
        if (m_rowCells.size() < 4096)
            m_rowCells.push_back(m_pendingCell);
        m_pendingCell = CellDef{};
        return;
    case Word::ClWWidth:
        m_pendingCell.width = clampTwips(value);
        return;
    case Word::ClFtsWidth:
        m_pendingCell.widthType = value;
        return;
    case Word::ClCbPat:
        m_pendingCell.background = value;
        return;
    default:
        return;
    }
}

void Interpreter::dispatchListValue(Word word, int value)
{
    const Destination d = destination();
    switch (word) {
    case Word::ListId:
        if (d == Destination::List && !m_lists.empty()) {
            m_lists.back().id = value;
            if (!m_listIndex.contains(value)) // the first list of an id is the one used
                m_listIndex.insert(value, int(m_lists.size()) - 1);
            m_textLists.clear();
        } else if (d == Destination::ListOverride) {
            m_overrideListId = value;
            if (m_overrideLs > 0)
                m_overrides.insert(m_overrideLs, m_overrideListId);
            m_textLists.clear();
        }
        return;
    case Word::Ls:
        if (d == Destination::ListOverride) {
            m_overrideLs = value;
            m_overrides.insert(m_overrideLs, m_overrideListId);
            m_textLists.clear();
        } else if (d == Destination::Text) {
            mutableState().para.list = value;
        }
        return;
    case Word::Ilvl:
        mutableState().para.level = value;
        return;
    case Word::LevelNfc:
    case Word::LevelNfcN:
        if (d == Destination::ListLevel && !m_lists.empty() && !m_lists.back().levels.empty())
            m_lists.back().levels.back().numberFormat = value;
        return;
    case Word::LevelStartAt:
        if (d == Destination::ListLevel && !m_lists.empty() && !m_lists.back().levels.empty())
            m_lists.back().levels.back().startAt = value;
        return;
    default:
        return;
    }
}

void Interpreter::dispatchSymbol(Word word)
{
    if (destination() != Destination::Text)
        return;
    switch (word) {
    case Word::Par:
    case Word::Sect:
        endParagraph(ParagraphEnd::Paragraph);
        return;
    case Word::Cell:
        endParagraph(ParagraphEnd::Cell);
        return;
    case Word::NestCell:
        endParagraph(ParagraphEnd::NestedCell);
        return;
    case Word::Row:
        if (!m_tables.empty()) {
            m_tables.resize(1);
            ++m_tables.front().row;
            m_tables.front().column = 0;
        }
        return;
    case Word::NestRow:
        if (m_tables.size() > 1) {
            ++m_tables.back().row;
            m_tables.back().column = 0;
        }
        return;
    default:
        break;
    }
    char16_t c = 0;
    switch (word) {
    case Word::Line:
        c = 0x2028;
        break;
    case Word::Tab:
        c = u'\t';
        break;
    case Word::Page:
        c = 0x000C;
        break;
    case Word::EmDash:
        c = 0x2014;
        break;
    case Word::EnDash:
        c = 0x2013;
        break;
    case Word::EmSpace:
        c = 0x2003;
        break;
    case Word::EnSpace:
        c = 0x2002;
        break;
    case Word::QmSpace:
        c = 0x2005;
        break;
    case Word::Bullet:
        c = 0x2022;
        break;
    case Word::LQuote:
        c = 0x2018;
        break;
    case Word::RQuote:
        c = 0x2019;
        break;
    case Word::LDblQuote:
        c = 0x201C;
        break;
    case Word::RDblQuote:
        c = 0x201D;
        break;
    case Word::Zwj:
        c = 0x200D;
        break;
    case Word::Zwnj:
        c = 0x200C;
        break;
    case Word::LtrMark:
        c = 0x200E;
        break;
    case Word::RtlMark:
        c = 0x200F;
        break;
    default:
        return;
    }
    appendCharacter(c);
}

void Interpreter::controlSymbol(char symbol)
{
    flushBytes();
    if (symbol == '*') {
        m_starPending = true;
        return;
    }
    m_starPending = false;
    if (m_skipUnits > 0) {
        --m_skipUnits;
        return;
    }
    if (destination() == Destination::ColorTable || !isTextDestination())
        return;
    switch (symbol) {
    case '\\':
    case '{':
    case '}':
        appendCharacter(char16_t(symbol));
        return;
    case '~':
        appendCharacter(0x00A0);
        return;
    case '_':
        appendCharacter(0x2011);
        return;
    case '-':
        appendCharacter(0x00AD);
        return;
    default:
        return; // "\:", "\|" and unknown symbols carry no text
    }
}

} // namespace qly::rtf
