#include "TourPage.h"

#include <QDir>
#include <QSaveFile>

using namespace Qt::StringLiterals;

namespace host {
namespace {

constexpr auto head =
    "<!doctype html>\n<html lang=\"en\">\n<meta charset=\"utf-8\">\n"
    "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
    "<title>VynTranslate, a tour</title>\n"
    "<style>\n"
    ":root { --ink: #14204a; --soft: #56607f; --line: #d5dcf2; --blue: #0f3cc9; }\n"
    "* { box-sizing: border-box; }\n"
    "body { margin: 0; background: #f2f5ff; color: var(--ink); font: 16px/1.5 'Noto Sans', system-ui, sans-serif; }\n"
    "header { background: var(--blue); color: #fff; padding: 40px max(24px, 6vw); }\n"
    "header h1 { margin: 0; font-size: 34px; }\n"
    "header p { margin: 6px 0 0; opacity: .85; }\n"
    "nav { padding: 14px max(24px, 6vw); background: #fff; border-bottom: 1px solid var(--line); }\n"
    "nav a { color: var(--blue); margin-right: 20px; text-decoration: none; font-weight: 600; }\n"
    "main { padding: 8px max(24px, 6vw) 80px; }\n"
    "h2 { margin: 48px 0 12px; font-size: 26px; }\n"
    "article { background: #fff; border: 1px solid var(--line); border-radius: 20px; padding: 22px 26px; margin: 0 0 "
    "18px; }\n"
    "article.failed { border: 2px solid #c62828; }\n"
    "h3 { margin: 0; font-size: 19px; }\n"
    "article > p { margin: 2px 0 14px; color: var(--soft); }\n"
    ".problem { color: #c62828; font-weight: 600; }\n"
    ".row { display: flex; flex-wrap: wrap; gap: 18px; }\n"
    "figure { margin: 0; }\n"
    "figure img { display: block; max-width: 100%; height: auto; max-height: 460px; width: auto; border-radius: 14px;"
    " border: 1px solid var(--line); }\n"
    "figcaption { font-size: 13px; color: var(--soft); margin-top: 6px; }\n"
    "dl { display: grid; grid-template-columns: max-content 1fr; gap: 4px 18px; margin: 16px 0 0; }\n"
    "dt { color: var(--soft); }\n"
    "dd { margin: 0; font-weight: 600; white-space: pre-wrap; }\n"
    "audio { display: block; width: 300px; max-width: 100%; }\n"
    ".row + .row { margin-top: 18px; }\n"
    "details { margin-top: 14px; }\n"
    "summary { cursor: pointer; color: var(--blue); font-size: 14px; }\n"
    "pre { margin: 8px 0 0; padding: 12px 16px; background: #14204a; color: #e7ebf8; border-radius: 12px; overflow-x: "
    "auto;"
    " font-size: 13px; line-height: 1.45; }\n"
    "</style>\n";

/// "chat-asha-recording.png" as "Chat asha recording".
QString captionOf(const QString &picture)
{
    QString caption = picture.chopped(4).replace(u'-', u' ');
    caption[0] = caption[0].toUpper();
    return caption;
}

QString pictureHtml(const QString &file)
{
    return u"<figure><a href=\"%1\"><img src=\"%1\" alt=\"%2\" loading=\"lazy\"></a><figcaption>%2</figcaption></figure>\n"_s
        .arg(file.toHtmlEscaped(), captionOf(file).toHtmlEscaped());
}

QString soundHtml(const TourSound &sound)
{
    return u"<figure><audio controls preload=\"none\" src=\"%1\"></audio><figcaption>%2: %3 s at %4 dB</figcaption></figure>\n"_s
        .arg(sound.file.toHtmlEscaped(), sound.caption.toHtmlEscaped())
        .arg(static_cast<double>(sound.facts.duration.count()) / 1000, 0, 'f', 1)
        .arg(sound.facts.levelDb, 0, 'f', 1);
}

QString momentHtml(const TourMoment &moment)
{
    QString html =
        u"<article%1>\n<h3>%2</h3>\n<p>%3</p>\n"_s.arg(moment.problem.isEmpty() ? u""_s : u" class=\"failed\""_s,
                                                       moment.title.toHtmlEscaped(), moment.told.toHtmlEscaped());
    if (!moment.problem.isEmpty())
        html += u"<p class=\"problem\">%1</p>\n"_s.arg(moment.problem.toHtmlEscaped());
    html += "<div class=\"row\">\n"_L1;
    for (const QString &picture : moment.pictures)
        html += pictureHtml(picture);
    html += "</div>\n"_L1;
    if (!moment.words.empty()) {
        html += "<dl>\n"_L1;
        for (const auto &[what, words] : moment.words)
            html += u"<dt>%1</dt><dd>%2</dd>\n"_s.arg(what.toHtmlEscaped(), words.toHtmlEscaped());
        html += "</dl>\n"_L1;
    }
    if (!moment.sounds.empty()) {
        html += "<div class=\"row\">\n"_L1;
        for (const TourSound &sound : moment.sounds)
            html += soundHtml(sound);
        html += "</div>\n"_L1;
    }
    if (!moment.console.isEmpty())
        html += u"<details><summary>Console lines: %1</summary><pre>%2</pre></details>\n"_s.arg(moment.console.size())
                    .arg(moment.console.join(u'\n').toHtmlEscaped());
    return html + "</article>\n"_L1;
}

} // namespace

bool writeTourPage(const QString &folder, const QString &subtitle, const std::vector<TourMoment> &moments)
{
    QString contents;
    QString html;
    QString chapter;
    for (const TourMoment &moment : moments) {
        if (moment.chapter != chapter) {
            chapter = moment.chapter;
            const QString anchor = chapter.toLower().replace(u' ', u'-');
            contents += u"<a href=\"#%1\">%2</a>"_s.arg(anchor, chapter.toHtmlEscaped());
            html += u"<h2 id=\"%1\">%2</h2>\n"_s.arg(anchor, chapter.toHtmlEscaped());
        }
        html += momentHtml(moment);
    }
    const QString page =
        u"%1<header><h1>VynTranslate, a tour</h1><p>%2</p></header>\n<nav>%3</nav>\n<main>\n%4</main>\n</html>\n"_s.arg(
            QLatin1StringView(head), subtitle.toHtmlEscaped(), contents, html);
    QSaveFile file(QDir(folder).filePath(u"index.html"_s));
    return file.open(QIODevice::WriteOnly) && file.write(page.toUtf8()) >= 0 && file.commit();
}

} // namespace host
