#ifndef APPS_MICRO800_CONTROLLER_TRACE_SERVICE_TEXT_H
#define APPS_MICRO800_CONTROLLER_TRACE_SERVICE_TEXT_H

#include "apps/micro800/controller/trace/field_lines.h"

/// Adds the fields of a message-router request or reply (CIP Networks Library Vol. 1, 2-4) of
/// `size` bytes. A service without a form of its own has its data as one field.
void addService(FieldLines& fields, int size, bool isReply);

#endif
