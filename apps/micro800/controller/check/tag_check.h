#ifndef APPS_MICRO800_CONTROLLER_CHECK_TAG_CHECK_H
#define APPS_MICRO800_CONTROLLER_CHECK_TAG_CHECK_H

#include <QString>
#include <QVector>
#include <functional>

#include "apps/micro800/controller/controller_session.h"
#include "apps/micro800/format/address_list.h"

/// What an address is worth on this controller, the worst first.
enum class Verdict {
    kNoReply,    ///< no answer, or none of use
    kMissing,    ///< the controller knows no such tag
    kWrongType,  ///< the tag has another type than the prefix names
    kTooLong,    ///< the declaration goes beyond the controller's array
    kNoElement,  ///< no element of these indexes, in the controller or in the declaration
    kTooLarge,   ///< a declared array cannot be read whole
    kRefused,    ///< the controller refuses the read for another reason
    kTooShort,   ///< the controller's array goes on beyond the declaration
    kOk
};
const int kVerdicts = static_cast<int>(Verdict::kOk) + 1;

/// "wrong type", and for scripts "wrong_type".
QString verdictText(Verdict verdict);
QString verdictKey(Verdict verdict);

struct TagCheck {
    Verdict verdict = Verdict::kOk;
    QString detail;          ///< what is wrong and what to write instead; empty for kOk
    QString controllerType;  ///< the controller's name of the type; empty when it gave no value
    int requests = 0;        ///< that the check made
    int readRequests = 0;    ///< that a panel needs to read it; 0 where it cannot
    double readMs = 0;       ///< how long that read took; 0 where there was none
};

/// Checks addresses against a controller, with as few requests as suffice.
///
/// A tag or an element takes one, when the answer is good. A declared array takes one for its first
/// and its last element each, one for the element beyond each of its upper bounds and before each
/// lower bound above 0, which must be refused, and one for the whole of it, as a panel polls it
/// (not of a STRING). What is wrong may take some more to say what is right. No state between two
/// checks.
class TagChecker {
 public:
    /// Reads `count` elements: ControllerSession::read, and readWhole for more than one.
    typedef std::function<TagReply(const QByteArray& name, int count)> Reader;

    /// `declarations` are the arrays of a project; elements of them have to lie within.
    TagChecker(const Reader& reader, const QVector<ListedAddress>& declarations);

    TagCheck check(const ListedAddress& address) const;

 private:
    const Reader read;
    const QVector<ListedAddress> declared;
};

#endif
