#include "study/report/html.h"

#include "study/report/document.h"
#include "study/report/palette.h"
#include "study/report/svg.h"
#include "study/report/wording.h"

using namespace Qt::StringLiterals;

namespace study {

namespace {

QString styleRules()
{
    return u":root{color-scheme:light dark;--ink:#1c1c1c;--faint:#5f5f5f;--line:#c4c4c4;--paper:#ffffff;"
           "--notice:#fff3d6;--link:#1f5a82}"
           "@media screen and (prefers-color-scheme:dark){:root{--ink:#ececec;--faint:#a8a8a8;--line:#4a4a4a;"
           "--paper:#161616;--notice:#3a3016;--link:#93c9ec}"_s +
           darkRules() +
           u"}"
           "html{background:var(--paper);color:var(--ink);font:16px/1.5 \"DejaVu Sans\",Verdana,sans-serif}"
           "body{max-width:52em;margin:0 auto;padding:1em;overflow-wrap:anywhere}"
           "h1{font-size:1.6em}h2{font-size:1.3em;margin-top:2.5em;border-top:1px solid var(--line);padding-top:.8em}"
           "h3{font-size:1.05em;margin-top:1.6em}a{color:var(--link)}"
           ".notice{background:var(--notice);border:2px solid var(--ink);padding:.7em 1em;font-weight:bold}"
           ".faint{color:var(--faint)}"
           ".wide{overflow-x:auto}table{border-collapse:collapse;margin:1em 0;font-size:.88em}"
           "caption{text-align:left;color:var(--faint);padding:.3em 0}"
           "th,td{border-bottom:1px solid var(--line);padding:.25em .8em .25em 0;text-align:left;vertical-align:top;"
           "overflow-wrap:break-word}"
           ".n{text-align:right;white-space:nowrap;font-variant-numeric:tabular-nums}"
           "blockquote{margin:1em 0;padding:.1em 1em;border-left:4px solid var(--line)}"
           "blockquote p,pre{white-space:pre-wrap}"
           "pre{font:.85em/1.45 \"DejaVu Sans Mono\",monospace;border:1px solid var(--line);padding:.8em;margin:1em 0}"
           "figure{margin:1.2em 0}svg{display:block;width:100%;height:auto}"
           "svg text{font-family:\"DejaVu Sans\",Verdana,sans-serif}figcaption{color:var(--faint);font-size:.88em}"
           "@page{size:A4;margin:18mm}"
           "@media print{html{font-size:10pt}body{max-width:none;padding:0}.page{break-before:page}"
           "th,td{overflow-wrap:anywhere}figure,tr,blockquote{break-inside:avoid}h2,h3{break-after:avoid}.wide{overflow:visible}}"_s;
}

/// Where foreign text becomes part of the page, and nowhere else but in svg.cpp.
QString escaped(const QString &text)
{
    return fitForPage(text).toHtmlEscaped();
}

class Writer
{
public:
    void operator()(const Heading &heading)
    {
        const QString tag = u"h%1"_s.arg(heading.level);
        html += u'<' + tag;
        if (!heading.anchor.isEmpty())
            html += u" id=\"%1\""_s.arg(escaped(heading.anchor));
        if (heading.startsPage)
            html += u" class=\"page\""_s;
        html += u" dir=\"auto\">%1</%2>\n"_s.arg(escaped(heading.text), tag);
    }

    void operator()(const Paragraph &paragraph)
    {
        static const QHash<Tone, QString> attributes{{Tone::Plain, u""_s},
                                                     {Tone::Notice, u" class=\"notice\" role=\"note\""_s},
                                                     {Tone::Faint, u" class=\"faint\""_s}};
        html += u"<p%1 dir=\"auto\">%2</p>\n"_s.arg(attributes.value(paragraph.tone), escaped(paragraph.text));
    }

    void operator()(const Entries &entries)
    {
        html += u"<ul>\n"_s;
        for (const Entries::Entry &entry : entries.entries) {
            const QString text = escaped(entry.text);
            html += entry.anchor.isEmpty()
                        ? u"<li dir=\"auto\">%1</li>\n"_s.arg(text)
                        : u"<li dir=\"auto\"><a href=\"#%1\">%2</a></li>\n"_s.arg(escaped(entry.anchor), text);
        }
        html += u"</ul>\n"_s;
    }

    void operator()(const TextTable &table)
    {
        html += u"<div class=\"wide\"><table>\n"_s;
        if (!table.caption.isEmpty())
            html += u"<caption dir=\"auto\">%1</caption>\n"_s.arg(escaped(table.caption));
        html += u"<thead><tr>"_s;
        for (qsizetype column = 0; column < table.header.size(); ++column)
            html += cell(table.header.at(column), u"th scope=\"col\""_s, u"th"_s, column >= table.texts);
        html += u"</tr></thead>\n<tbody>\n"_s;
        for (const TextTable::Row &row : table.rows) {
            html += row.faint ? u"<tr class=\"faint\">"_s : u"<tr>"_s;
            for (qsizetype column = 0; column < row.cells.size(); ++column)
                html += cell(row.cells.at(column), u"td"_s, u"td"_s, column >= table.texts);
            html += u"</tr>\n"_s;
        }
        html += u"</tbody>\n</table></div>\n"_s;
    }

    void operator()(const Quotation &quotation)
    {
        html += u"<blockquote><p dir=\"auto\">%1</p><p class=\"faint\" dir=\"auto\">%2</p></blockquote>\n"_s.arg(
            escaped(quotation.text), escaped(quotation.source));
    }

    void operator()(const Verbatim &verbatim)
    {
        // A first line feed would be taken for the page's own.
        html += u"<pre dir=\"auto\">\n%1</pre>\n"_s.arg(escaped(verbatim.text));
    }

    void operator()(const Figure &figure)
    {
        html += u"<figure>\n%1\n<figcaption dir=\"auto\">%2</figcaption>\n</figure>\n"_s.arg(toSvg(figure, ++figures),
                                                                                             escaped(figure.title));
    }

    QString html;

private:
    static QString cell(const QString &text, const QString &opening, const QString &closing, bool isNumber)
    {
        return u"<%1%2>%3</%4>"_s.arg(opening, isNumber ? u" class=\"n\""_s : u" dir=\"auto\""_s, escaped(text),
                                      closing);
    }

    int figures = 0;
};

} // namespace

QByteArray toHtml(const Document &document)
{
    Writer writer;
    for (const Block &block : document.blocks)
        std::visit(writer, block);
    const QString head = u"<!DOCTYPE html>\n<html xmlns=\"http://www.w3.org/1999/xhtml\" lang=\"en\">\n<head>\n"
                         "<meta charset=\"utf-8\"/>\n"
                         "<meta http-equiv=\"Content-Security-Policy\" "
                         "content=\"default-src 'none'; style-src 'unsafe-inline'; img-src data:\"/>\n"
                         "<meta name=\"viewport\" content=\"width=device-width\"/>\n<title>%1</title>\n<style>\n"_s.arg(
                             escaped(document.title));
    return (head + styleRules() + u"\n</style>\n</head>\n<body>\n<main>\n"_s + writer.html +
            u"</main>\n</body>\n</html>\n"_s)
        .toUtf8();
}

} // namespace study
