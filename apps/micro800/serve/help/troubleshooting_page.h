#ifndef APPS_MICRO800_SERVE_TROUBLESHOOTING_PAGE_H
#define APPS_MICRO800_SERVE_TROUBLESHOOTING_PAGE_H

#include <QByteArray>
#include <QString>

/// A page in Markdown as HTML, as far as docs/troubleshooting.md uses it: headings, paragraphs,
/// lists, tables, blocks of code, `code` and links. Nothing of the text becomes a tag: all of it is
/// escaped. A heading has the anchor that Markdown gives it, a row of a table one for each text in
/// backquotes of its first cell (anchorOf()).
QByteArray htmlPage(const QString& markdown);

/// "ab-error-0005h" for "AB error: 0005H": small letters and digits, everything else is a dash.
QString anchorOf(const QString& text);

/// docs/troubleshooting.md, made once.
const QByteArray& troubleshootingPage();

#endif
