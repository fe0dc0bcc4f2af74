#pragma once
// The extended RTF writer's passes and the export context they share.
//
// The writer is a fixed list of passes (ExtendedRTFWriter.cpp). The text passes rewrite the text so
// that each feature the plain RTF writer cannot express travels as a unique text marker; one pass has
// the plain writer make base RTF; the RTF passes replace each marker with the RTF it stands for and
// repair the rest. Each marker is defined once, in the file that holds both the pass that inserts it
// and the pass that replaces it. Passes talk to each other only through the named fields of Context.
#include <QSet>
#include <QString>
#include <QStringList>
#include <QVariantMap>
#include <vector>

#include <qlyappkit/interchange/rtf/RTFHeadersFooters.h>
#include <qlyappkit/interchange/rtf/RTFOptions.h>
#include <qlyappkit/interchange/rtf/RTFPictures.h>
#include <qlyappkit/platform/text/AttributedString.h>
#include <qlyappkit/platform/values/ParagraphStyle.h>

namespace qly::extendedrtf {

/// The options dictionary as the passes need it, read once by readOptions.
struct Options {
    bool msWord = false, cocoaListIndents = false, ensureLinkColors = false;
    bool restartEachPage = false, periodStyle = false, widowControl = false, indentFootnotes = false;
    int footnoteStyle = 0, endnoteStyle = 0, pdfResolution = DefaultPDFToPNGResolution;
    bool asEndnote[4] = {false, false, false, false}; ///< by footnote kind 1–3
    HeaderFooterSettings headers;
    bool sectionTitles = false; ///< some header or footer names the section title
    QString columnsControl; ///< "\colsN\colsxN " when 2 or more columns were asked for, else empty
};

/// A section found by markSections, in text order.
struct Section {
    QString title;
    SectionFlags flags;
};

/// One export: its inputs, the text and then the RTF being rewritten, and what a pass hands on to a
/// later one (each hand-off names the pass that sets it and those that read it).
struct Context {
    // ---- inputs
    AttributedString text; ///< the exported range; rewritten by the text passes
    QVariantMap documentAttributes; ///< the caller's (page size, margins, author)
    QVariantMap optionsDictionary; ///< the caller's XQRTF… options
    Options options; ///< readOptions; read by most passes
    QString rtf; ///< writeBaseRTF; rewritten by every pass after it

    // ---- hand-offs between passes
    /// prepareText → markColumnsAndHeaderFooter, writeHeadersFootersSectionsAndColumns: the caller
    /// put the columns marker in the text (columns then start there, after a section break).
    bool columnsMarkerInText = false;
    /// readOptions (before list indents are fixed) → writeFootnotes: the first-line indent of the
    /// most used paragraph style, and the most common alignment.
    double footnoteIndent = 0;
    TextAlignment alignment = NaturalTextAlignment;
    /// fixListsAndLinks → fixFontTableAndStylesheet: the link targets given colour and underline.
    QStringList coloredLinks;
    /// markSections → writeHeadersFootersSectionsAndColumns: one per section marker, in order.
    std::vector<Section> sections;
    /// markPictures → writePictures: picture n (from 1) is images[n - 1].
    std::vector<RTFImageRecord> images;
    /// encloseNotes → markFootnoteControls, fixFontTableAndStylesheet, writeHeadersFootersSectionsAndColumns:
    /// some footnote or endnote is written.
    bool hasFootnotes = false;
    /// encloseNotes → fixFontTableAndStylesheet: the footnote kinds (1–3) present.
    QSet<int> footnoteKinds;
    /// encloseNotes → writeFootnotes: the note mark's size in half-points, from the first footnote's font.
    int footnoteMarkSize = 24;
};

// ---- helpers shared by the passes (ExtendedRTFExport.cpp)

/// One edit of a single-scan rewrite: at pos, delete length characters and insert text.
struct Edit {
    qsizetype pos = 0;
    qsizetype length = 0;
    QString text;
};
/// Applies edits in order of position (equal positions keep their order) in one pass; an edit that
/// starts inside an earlier deletion is dropped.
QString applyEdits(const QString& s, std::vector<Edit>& edits);
/// Replaces every marker, and the backslash right after it (the paragraph break the plain writer
/// makes of the line feed that ends a leading marker paragraph), with replacement, in one scan.
void replaceMarkerParagraph(QString& rtf, const QString& marker, const QString& replacement);
/// The attributes, less attachments, that inserted text at index should carry (clamped to the text).
Attributes attributesForInsertion(const AttributedString& text, qsizetype index);
/// Inserts a marker at the very start, in the first character's formatting (never its notes or links)
/// and always with a font.
void insertLeadingMarker(AttributedString& text, const QString& marker);

// ---- the passes, by the file that defines them

// ExtendedRTFWriter.cpp: the document as a whole
void prepareText(Context& c);
void readOptions(Context& c);
void fixListsAndLinks(Context& c);
void markWidowControl(Context& c);
void writeBaseRTF(Context& c);
void supplyPageSetup(Context& c);
void repairOldLists(Context& c);
void fixFontTableAndStylesheet(Context& c);
void writeWidowControl(Context& c);
void linkInternalHyperlinks(Context& c);
void writeLineSeparators(Context& c);

// RTFSectionPasses.cpp: sections, headers and footers, columns
void markSections(Context& c);
void markColumnsAndHeaderFooter(Context& c);
void writeHeadersFootersSectionsAndColumns(Context& c);

// RTFBookmarkPasses.cpp
void markBookmarksAndPageReferences(Context& c);
void writeBookmarksAndPageReferences(Context& c);

// RTFKeepWithNextPasses.cpp
void markKeepWithNext(Context& c);
void writeKeepWithNext(Context& c);

// RTFPicturePasses.cpp
void markPictures(Context& c);
void writePictures(Context& c);

// RTFNotePasses.cpp: comments, annotations, footnotes and endnotes
void encloseNotes(Context& c);
void markFootnoteControls(Context& c);
void writeComments(Context& c);
void writeFootnoteControls(Context& c);
void writeFootnotes(Context& c);
/// The footnote numbering controls that each section repeats after its "\sectd".
QString sectionFootnoteControls(const Context& c);

} // namespace qly::extendedrtf
