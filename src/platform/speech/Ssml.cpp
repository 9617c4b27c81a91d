#include "platform/speech/Ssml.h"

namespace vynlex {
namespace {

/// XML 1.0, section 2.2, within the basic plane.
bool isXmlCharacter(QChar c)
{
    return c >= QChar(0x20) ? c < QChar(0xfffe) : c == '\t' || c == '\n' || c == '\r';
}

QString escaped(const QString &text)
{
    QString out;
    out.reserve(text.size() + text.size() / 8);
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text[i];
        if (c.isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate()) {
            out += c;
            out += text[++i];
        } else if (c == '&') {
            out += QStringLiteral("&amp;");
        } else if (c == '<') {
            out += QStringLiteral("&lt;");
        } else if (c == '>') {
            out += QStringLiteral("&gt;");
        } else if (c == '"') {
            out += QStringLiteral("&quot;");
        } else if (c == '\'') {
            out += QStringLiteral("&apos;");
        } else if (isXmlCharacter(c) && !c.isSurrogate()) {
            out += c;
        }
    }
    return out;
}

} // namespace

QByteArray ssml(const QString &text, const QString &voiceName)
{
    const QString voice = voiceName.isEmpty() ? QStringLiteral("en-US-AriaNeural") : voiceName;
    // A voice's name begins with its locale: language and region.
    const QString locale = voice.section('-', 0, 1);
    return QStringLiteral("<speak version='1.0' xmlns='http://www.w3.org/2001/10/synthesis' xml:lang='%1'>"
                          "<voice name='%2'>%3</voice></speak>")
        .arg(escaped(locale), escaped(voice), escaped(text))
        .toUtf8();
}

} // namespace vynlex
