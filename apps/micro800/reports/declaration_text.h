#ifndef APPS_MICRO800_REPORTS_DECLARATION_TEXT_H
#define APPS_MICRO800_REPORTS_DECLARATION_TEXT_H

#include <QString>

#include "apps/micro800/project/project_store.h"

/// " (50 elements)"; empty for a row that declares nothing.
QString elementsText(const QString& address);

/// What became of a declaration: "DINT0:RECIPE[0..9] (10 elements) on link 1: added".
QString declaredText(const QString& address, int link, ProjectStore::Declared done);

#endif
