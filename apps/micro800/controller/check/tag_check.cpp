#include "apps/micro800/controller/check/tag_check.h"

#include "apps/micro800/controller/check/array_check.h"
#include "apps/micro800/controller/check/check_run.h"

namespace {

struct VerdictName {
    const char* text;
    const char* key;
};

const VerdictName kNames[kVerdicts] = {
    {"no answer", "no_answer"}, {"missing", "missing"},       {"wrong type", "wrong_type"},
    {"too long", "too_long"},   {"no element", "no_element"}, {"too large", "too_large"},
    {"refused", "refused"},     {"too short", "too_short"},   {"ok", "ok"},
};

/// The declaration of the array that the address names an element of; null when there is none.
const ListedAddress* declarationOf(const TagAddress& element,
                                   const QVector<ListedAddress>& declared) {
    const QString name = arrayNameOf(element.name);
    for (int i = declared.size() - 1; i >= 0; --i) {  // the driver takes the last one
        if (element.isElement && arrayNameOf(declared.at(i).first.name) == name) {
            return &declared.at(i);
        }
    }
    return nullptr;
}

bool liesWithin(const QVector<int>& indexes, const QVector<ArrayDeclaration::Range>& ranges) {
    if (indexes.size() != ranges.size()) {
        return false;
    }
    for (int i = 0; i < indexes.size(); ++i) {
        if (indexes.at(i) < ranges.at(i).lower || indexes.at(i) > ranges.at(i).upper) {
            return false;
        }
    }
    return true;
}

void checkPlain(const ListedAddress& address, const QVector<ListedAddress>& declared,
                CheckRun& run) {
    const TagReply reply = run.read(address.first.name, 1);
    if (!run.takeFirst(address.first, reply)) {
        return;
    }
    run.result.readRequests = 1;
    run.result.readMs = reply.microseconds / 1000;
    const ListedAddress* declaration = declarationOf(address.first, declared);
    if (declaration && !liesWithin(indexesOf(address.first.name), declaration->ranges)) {
        run.set(Verdict::kNoElement, QStringLiteral("the project declares %1, and the panel would "
                                                    "read something else")
                                         .arg(declaration->text));
    }
}

}  // namespace

QString verdictText(Verdict verdict) {
    return QLatin1String(kNames[static_cast<int>(verdict)].text);
}

QString verdictKey(Verdict verdict) {
    return QLatin1String(kNames[static_cast<int>(verdict)].key);
}

TagChecker::TagChecker(const Reader& reader, const QVector<ListedAddress>& declarations)
    : read(reader), declared(declarations) {}

TagCheck TagChecker::check(const ListedAddress& address) const {
    CheckRun run(read);
    if (address.isRange()) {
        checkArray(address, run);
    } else {
        checkPlain(address, declared, run);
    }
    return run.result;
}
