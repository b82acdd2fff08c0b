#include "apps/simulator/profiles.h"

#include <QStringList>

namespace sim {

namespace {

void beEarly(ControllerSettings* settings) {
    settings->servesTags = false;
    settings->symbols = SymbolList::none;
}

void beOlder(ControllerSettings* settings) {
    settings->tags.unknownTagStatus = kPathSegmentError;
    settings->tags.boolTrue = 0xFF;
    settings->symbols = SymbolList::partial;
}

void beNewer(ControllerSettings* settings) {
    settings->tags.unknownTagStatus = kPathDestinationUnknown;
    settings->tags.boolTrue = 0x01;
    settings->symbols = SymbolList::partial;
    settings->identity.productName = "2080-LC50-48QWBS";
    settings->identity.productCode = 259;
    settings->identity.majorRevision = 12;
    settings->identity.minorRevision = 11;
    settings->identity.status = 0x0034;
    settings->identity.state = 2;
}

const struct {
    const char* name;
    void (*apply)(ControllerSettings* settings);
} kProfiles[] = {{"early", beEarly}, {"older", beOlder}, {"newer", beNewer}};

}  // namespace

bool applyProfile(const QString& name, ControllerSettings* settings) {
    for (const auto& profile : kProfiles) {
        if (name == profile.name) {
            profile.apply(settings);
            return true;
        }
    }
    return false;
}

QString profileNames() {
    QStringList names;
    for (const auto& profile : kProfiles) {
        names << profile.name;
    }
    return names.join(", ");
}

}  // namespace sim
