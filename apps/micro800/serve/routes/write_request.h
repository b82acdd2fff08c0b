#ifndef APPS_MICRO800_SERVE_WRITE_REQUEST_H
#define APPS_MICRO800_SERVE_WRITE_REQUEST_H

#include "apps/micro800/serve/live/live_model.h"
#include "apps/micro800/serve/routes/write_order.h"

/// {"ok": false, "problem": TEXT}
HttpReply writeProblem(int status, const QString& problem);
/// {"ok": true, "old": TEXT, "new": TEXT}
HttpReply writeDone(const QString& before, const QString& after);

/// Takes a request to write apart: JSON with exactly the texts "address", a row of the page, and
/// "value", as the command write takes it. False with the answer for the client.
bool parseWriteRequest(const HttpRequest& request, const LiveModel& model, WriteOrder* order,
                       HttpReply* problem);

#endif
