#pragma once
// A byte buffer that writes RTF: control words from the shared table, numbers, and text escaped
// to 7-bit ASCII. It inserts the blank that ends a control word only when text follows it.
#include <QByteArray>
#include <QStringView>

#include <qlyappkit/platform/rtf/RTFControlWords_p.h>

namespace qly::rtf {

class Output {
public:
    explicit Output(QByteArray& bytes) : m_bytes(bytes) { }

    void word(Word w);
    void word(Word w, int value);
    void number(long long value);
    /// Markup written as is (braces, "\*" and the like); it ends any pending control word itself.
    void raw(const char* markup);
    void newline();
    /// Text escaped: "\\", "\{", "\}", tabs as "\tab", form feeds as "\page", everything outside
    /// printable ASCII as "\uc0\uN ". Line and paragraph breaks are the caller's.
    void text(QStringView text);
    void unicode(char16_t unit);
    void paragraphBreak();

private:
    void delimit();

    QByteArray& m_bytes;
    bool m_pendingWord = false;
};

} // namespace qly::rtf
