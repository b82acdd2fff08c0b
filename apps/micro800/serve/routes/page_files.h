#ifndef APPS_MICRO800_SERVE_PAGE_FILES_H
#define APPS_MICRO800_SERVE_PAGE_FILES_H

#include <QString>

#include "apps/micro800/serve/http/http_message.h"

/// A file of the page, as it was when this program was built.
struct PageFile {
    const char* name;  ///< "app.css"
    const char* text;
    int size;
};

/// Made by the build: the files of page/ and the chart library. The last one has no name.
extern const PageFile kPageFiles[];

/// The reply with the file of this path: "/app.css", and "/" for the page itself. False when there
/// is none.
bool pageFileReply(const QString& path, HttpReply* reply);

#endif
