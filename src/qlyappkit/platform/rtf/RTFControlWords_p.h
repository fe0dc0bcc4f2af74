#pragma once
// The RTF control words this code reads and writes, in one table: the reader looks words up by name
// and dispatches on their kind; the writer takes every spelling from here.
#include <cstdint>
#include <string_view>

namespace qly::rtf {

#define QLY_RTF_WORDS(X)                                                                                               \
    /* document */                                                                                                     \
    X(Rtf, "rtf", Flag)                                                                                                \
    X(Ansi, "ansi", Flag) X(Mac, "mac", Flag) X(Pc, "pc", Flag) X(Pca, "pca", Flag) X(AnsiCpg, "ansicpg", Value)       \
        X(Deff, "deff", Value) X(CocoaRtf, "cocoartf", Value) X(PaperW, "paperw", Value) X(PaperH, "paperh", Value)    \
            X(MargL, "margl", Value) X(MargR, "margr", Value) X(MargT, "margt", Value) X(MargB, "margb", Value)        \
                X(ViewKind, "viewkind", Value) /* tables of the header */                                              \
        X(FontTable, "fonttbl", Destination) X(F, "f", Value) X(FCharset, "fcharset", Value) X(Cpg, "cpg", Value)      \
            X(FNil, "fnil", Flag) X(FRoman, "froman", Flag) X(FSwiss, "fswiss", Flag) X(FModern, "fmodern", Flag)      \
                X(ColorTable, "colortbl", Destination) X(Red, "red", Value) X(Green, "green", Value)                   \
                    X(Blue, "blue", Value) X(Info, "info", Destination)                                                \
                        X(Author, "author", Destination) /* character formatting */                                    \
        X(Plain, "plain", Flag) X(Fs, "fs", Value) X(B, "b", Toggle) X(I, "i", Toggle) X(Ul, "ul", Toggle)             \
            X(UlNone, "ulnone", Flag) X(UlDb, "uldb", Flag) X(UlTh, "ulth", Flag) X(UlW, "ulw", Flag)                  \
                X(UlD, "uld", Flag) X(UlDash, "uldash", Flag) X(UlC, "ulc", Value) X(Strike, "strike", Toggle)         \
                    X(StrikeD, "striked", Toggle) X(Cf, "cf", Value) X(Cb, "cb", Value) X(ChCbPat, "chcbpat", Value)   \
                        X(Highlight, "highlight", Value) X(Super, "super", Flag) X(Sub, "sub", Flag)                   \
                            X(NoSuperSub, "nosupersub", Flag) X(Up, "up", Value) X(Dn, "dn", Value)                    \
                                X(Expnd, "expnd", Value) X(ExpndTw, "expndtw", Value)                                  \
                                    X(Hidden, "v", Toggle) /* paragraph formatting */                                  \
        X(Pard, "pard", Flag) X(Ql, "ql", Flag) X(Qr, "qr", Flag) X(Qc, "qc", Flag) X(Qj, "qj", Flag)                  \
            X(Qd, "qd", Flag) X(Fi, "fi", Value) X(Li, "li", Value) X(Ri, "ri", Value) X(Lin, "lin", Value)            \
                X(Rin, "rin", Value) X(Sb, "sb", Value) X(Sa, "sa", Value) X(Sl, "sl", Value)                          \
                    X(SlMult, "slmult", Value) X(LineSpacing, "qlylinespacing", Value)                                 \
                        X(MinLineHeight, "qlyminlineheight", Value) X(MaxLineHeight, "qlymaxlineheight", Value)        \
                            X(Tx, "tx", Value) X(Tb, "tb", Value) X(Tqr, "tqr", Flag) X(Tqc, "tqc", Flag)              \
                                X(Tqdec, "tqdec", Flag) X(OutlineLevel, "outlinelevel", Value) /* lists */             \
        X(ListTable, "listtable", Destination) X(List, "list", Destination) X(ListId, "listid", Value)                 \
            X(ListTemplateId, "listtemplateid", Value) X(ListHybrid, "listhybrid", Flag)                               \
                X(ListLevel, "listlevel", Destination) X(LevelNfc, "levelnfc", Value) X(LevelNfcN, "levelnfcn", Value) \
                    X(LevelJc, "leveljc", Value) X(LevelFollow, "levelfollow", Value)                                  \
                        X(LevelStartAt, "levelstartat", Value) X(LevelText, "leveltext", Destination)                  \
                            X(LevelNumbers, "levelnumbers", Destination) X(ListName, "listname", SkipDestination)      \
                                X(ListOverrideTable, "listoverridetable", Destination)                                 \
                                    X(ListOverride, "listoverride", Destination)                                       \
                                        X(ListOverrideCount, "listoverridecount", Value) X(Ls, "ls", Value)            \
                                            X(Ilvl, "ilvl", Value) X(ListText, "listtext", Destination)                \
                                                X(PnText, "pntext", Destination) /* tables */                          \
        X(Trowd, "trowd", Flag) X(TrGaph, "trgaph", Value) X(TrLeft, "trleft", Value) X(CellX, "cellx", Value)         \
            X(ClWWidth, "clwWidth", Value) X(ClFtsWidth, "clftsWidth", Value) X(ClCbPat, "clcbpat", Value)             \
                X(InTbl, "intbl", Flag) X(Itap, "itap", Value) X(Cell, "cell", Symbol) X(NestCell, "nestcell", Symbol) \
                    X(Row, "row", Symbol) X(NestRow, "nestrow", Symbol) /* fields */                                   \
        X(Field, "field", Destination) X(FldInst, "fldinst", Destination)                                              \
            X(FldRslt, "fldrslt", Destination) /* unicode */                                                           \
        X(Uc, "uc", Value) X(U, "u", Value) X(Upr, "upr", Destination) X(Ud, "ud", Destination) /* characters */       \
        X(Par, "par", Symbol) X(Line, "line", Symbol) X(Tab, "tab", Symbol) X(Page, "page", Symbol)                    \
            X(Sect, "sect", Symbol) X(EmDash, "emdash", Symbol) X(EnDash, "endash", Symbol)                            \
                X(EmSpace, "emspace", Symbol) X(EnSpace, "enspace", Symbol) X(QmSpace, "qmspace", Symbol)              \
                    X(Bullet, "bullet", Symbol) X(LQuote, "lquote", Symbol) X(RQuote, "rquote", Symbol)                \
                        X(LDblQuote, "ldblquote", Symbol) X(RDblQuote, "rdblquote", Symbol) X(Zwj, "zwj", Symbol)      \
                            X(Zwnj, "zwnj", Symbol) X(LtrMark, "ltrmark", Symbol)                                      \
                                X(RtlMark, "rtlmark",                                                                  \
                                  Symbol) /* destinations whose contents are not text of the document */               \
        X(Stylesheet, "stylesheet", SkipDestination) X(Pict, "pict", SkipDestination)                                  \
            X(Object, "object", SkipDestination) X(Shp, "shp", SkipDestination) X(ShpPict, "shppict", SkipDestination) \
                X(NonShpPict, "nonshppict", SkipDestination) X(Header, "header", SkipDestination)                      \
                    X(HeaderL, "headerl", SkipDestination) X(HeaderR, "headerr", SkipDestination) X(                   \
                        HeaderF, "headerf", SkipDestination) X(Footer, "footer", SkipDestination)                      \
                        X(FooterL, "footerl", SkipDestination) X(FooterR, "footerr", SkipDestination) X(               \
                            FooterF, "footerf", SkipDestination) X(Footnote, "footnote", SkipDestination)              \
                            X(Annotation, "annotation", SkipDestination) X(FtnSep, "ftnsep", SkipDestination) X(       \
                                FtnSepC, "ftnsepc", SkipDestination) X(AftnSep, "aftnsep", SkipDestination)            \
                                X(AftnSepC, "aftnsepc", SkipDestination) X(Title, "title", SkipDestination) X(         \
                                    Subject, "subject",                                                                \
                                    SkipDestination) X(Operator, "operator",                                           \
                                                       SkipDestination) X(Keywords, "keywords", SkipDestination)       \
                                    X(Comment, "comment", SkipDestination) X(DocComm, "doccomm", SkipDestination) X(   \
                                        CreaTim, "creatim",                                                            \
                                        SkipDestination) X(RevTim, "revtim", SkipDestination)                          \
                                        X(PrinTim, "printim", SkipDestination) X(BupTim, "buptim", SkipDestination) X( \
                                            Company, "company",                                                        \
                                            SkipDestination) X(Category, "category",                                   \
                                                               SkipDestination) X(Manager, "manager", SkipDestination) \
                                            X(HlinkBase, "hlinkbase", SkipDestination) X(Xe, "xe", SkipDestination)    \
                                                X(Tc, "tc", SkipDestination) X(Txe, "txe", SkipDestination) X(         \
                                                    Rxe, "rxe",                                                        \
                                                    SkipDestination) X(Private, "private", SkipDestination)            \
                                                    X(Pn, "pn", SkipDestination) X(RevTbl, "revtbl", SkipDestination)  \
                                                        X(BkmkStart, "bkmkstart",                                      \
                                                          SkipDestination) X(BkmkEnd, "bkmkend", SkipDestination)      \
                                                            X(AtnId, "atnid", SkipDestination)                         \
                                                                X(AtnAuthor, "atnauthor", SkipDestination)             \
                                                                    X(Template, "template", SkipDestination)           \
                                                                        X(Do, "do", SkipDestination)                   \
                                                                            X(NestTableProps, "nesttableprops",        \
                                                                              SkipDestination) X(NoNestTables,         \
                                                                                                 "nonesttables",       \
                                                                                                 SkipDestination)      \
                                                                                X(FileTbl, "filetbl", SkipDestination)

enum class Word : std::uint16_t {
#define QLY_RTF_ENUM(id, name, kind) id,
    QLY_RTF_WORDS(QLY_RTF_ENUM)
#undef QLY_RTF_ENUM
        Count
};

enum class WordKind : std::uint8_t {
    Flag, ///< its parameter, if any, is ignored or read as the word needs
    Toggle, ///< on without a parameter, off with 0
    Value, ///< needs its parameter
    Destination, ///< starts a destination this code reads
    SkipDestination, ///< starts a destination whose contents are skipped
    Symbol, ///< stands for a character or a break
};

struct WordInfo {
    std::string_view name;
    Word word;
    WordKind kind;
};

/// The word with that name; nullptr for words this code does not know.
const WordInfo* lookupWord(std::string_view name);
/// The spelling of a word, without its backslash.
std::string_view wordName(Word word);

} // namespace qly::rtf
