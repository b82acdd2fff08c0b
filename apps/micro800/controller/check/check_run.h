#ifndef APPS_MICRO800_CONTROLLER_CHECK_CHECK_RUN_H
#define APPS_MICRO800_CONTROLLER_CHECK_CHECK_RUN_H

#include "apps/micro800/controller/check/tag_check.h"

/// The array's name before the brackets, in upper case; the whole name without brackets.
QString arrayNameOf(const QString& name);
/// The indexes in the brackets at the end of a name; none without.
QVector<int> indexesOf(const QString& name);
/// "NAME[2,3]".
QString elementName(const QString& array, const QVector<int>& indexes);

/// One check while it goes on: its reads, counted, and what they came to.
class CheckRun {
 public:
    explicit CheckRun(const TagChecker::Reader& how) : reader(how) {}

    /// Reads from the controller. The name is sent in upper case, as the plugin sends it.
    TagReply read(const QString& name, int count);

    /// Judges the first reply for an address: whether there is such a tag, and of its type. False
    /// when the verdict is there.
    bool takeFirst(const TagAddress& address, const TagReply& reply);
    /// The verdict over a reply that is no value and that no check expects. Always false.
    bool failWith(const TagReply& reply);
    bool set(Verdict verdict, const QString& detail);

    TagCheck result;

 private:
    bool refuse(const TagAddress& address, const TagReply& reply);

    const TagChecker::Reader& reader;
};

/// Whether a refusal says that the element lies outside the array.
bool isBeyondEnd(const TagReply& reply);

#endif
