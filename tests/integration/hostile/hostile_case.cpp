#include "integration/hostile/hostile_case.h"

#include <cstdlib>

#include "integration/hostile/verdict.h"

namespace {

const int kHeader = 24;
/// Between two pieces: long enough for a driver that waits to take the first one. Nothing depends
/// on that it does.
const int kPauseUs = 300;
/// The thread sanitizer has no use for all: an odd number, so that every delivery has its turn.
#ifdef __SANITIZE_THREAD__
const int kEvery = 7;
#else
const int kEvery = 1;
#endif
/// A long reply does not go out byte by byte, but in so many pieces.
const int kMostPieces = 600;

const char* nameOf(Delivery delivery) {
    switch (delivery) {
        case Delivery::kWhole:
            return "whole";
        case Delivery::kByteByByte:
            return "byte by byte";
        case Delivery::kTwoPieces:
            return "in two pieces";
        case Delivery::kWithNext:
            return "with the next";
    }
    return "";
}

/// Somewhere in the reply, for each another place and always the same.
int splitOf(const HostileCase& hostile, int size) {
    unsigned sum = 0;
    for (const char letter : hostile.variant.name) {
        sum = sum * 31 + static_cast<unsigned char>(letter);
    }
    return size < 2 ? size : 1 + int(sum % unsigned(size - 1));
}

QList<QByteArray> piecesOf(const QByteArray& bytes, int size) {
    QList<QByteArray> pieces;
    for (int at = 0; at < bytes.size(); at += size) {
        pieces << bytes.mid(at, size);
    }
    return pieces;
}

}  // namespace

QByteArray HostileCase::name() const {
    return variant.name + ", " + nameOf(delivery);
}

QList<HostileCase> casesOf(const Exchange& exchange) {
    const QByteArray only = qgetenv("HOSTILE_CASE");
    const int asked = qEnvironmentVariableIntValue("HOSTILE_EVERY");
    const int every = asked > 0 ? asked : kEvery;
    QList<HostileCase> cases;
    int number = 0;
    for (const Variant& variant : variantsOf(exchange)) {
        for (const Delivery delivery :
             {Delivery::kWhole, Delivery::kByteByByte, Delivery::kTwoPieces, Delivery::kWithNext}) {
            const HostileCase made = {variant, delivery};
            if (only.isEmpty() ? number++ % every == 0 : made.name() == only) {
                cases << made;
            }
        }
    }
    return cases;
}

Outgoing outgoing(const HostileCase& hostile, const QByteArray& request, const QByteArray& next) {
    Outgoing out = Outgoing();
    out.answer.hangsUp = hostile.variant.hangsUp;
    out.stream = replyTo(request, hostile.variant.bytes, hostile.variant.echoes);
    const int first = firstMessageSize(out.stream);
    int split = 0;
    switch (hostile.delivery) {
        case Delivery::kWhole:
            out.answer.pieces = piecesOf(out.stream, qMax(1, out.stream.size()));
            break;
        case Delivery::kByteByByte:
            split = qMax(1, out.stream.size() / kMostPieces);
            out.answer.pieces = piecesOf(out.stream, split);
            break;
        case Delivery::kTwoPieces:
            split = splitOf(hostile, out.stream.size());
            out.answer.pieces = {out.stream.left(split), out.stream.mid(split)};
            out.answer.pauseUs = kPauseUs;
            break;
        case Delivery::kWithNext:
            out.stream += next;
            out.answer.pieces = {out.stream};
            break;
    }
    out.mayCutHeader = split > 0 && split < kHeader;
    out.mayDisturb = out.answer.hangsUp || (split > 0 && first >= 0 && first < out.stream.size());
    return out;
}
