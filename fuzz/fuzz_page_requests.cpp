// Requests to the live page: method, target, headers and body, each of any bytes, up to the checks
// of the head and after them.

#include <QJsonDocument>
#include <cstdint>

#include "apps/micro800/serve/http/access_token.h"
#include "apps/micro800/serve/http/request_check.h"
#include "apps/micro800/serve/routes/page_routes.h"

namespace {

const char kToken[] = "a-token-nobody-guesses";

void demand(bool holds) {
    if (!holds) {
        __builtin_trap();
    }
}

TagAddress parsed(const char* text) {
    TagAddress address;
    QString problem;
    demand(parseTagAddress(QString::fromLatin1(text), &address, &problem));
    return address;
}

/// The page that is asked, with and without a token.
struct Page {
    explicit Page(const QByteArray& token)
        : model(facts()), routes(&model, token, [this](const WriteOrder& order) {
              demand(order.index >= 0 && order.index < 3 && !order.bytes.isEmpty());
              ++writes;
              return true;
          }) {}

    static LiveFacts facts() {
        LiveFacts facts;
        facts.addresses = {parsed("DINT0:A"), parsed("STRING0:B"), parsed("REAL0:C[1]")};
        facts.allowWrite = true;
        return facts;
    }

    LiveModel model;
    PageRoutes routes;
    int writes = 0;
};

/// Cuts the input at zero bytes.
HttpRequest requestFrom(const QByteArray& input) {
    QList<QByteArray> parts = input.split('\0');
    while (parts.size() < 3) {
        parts.append(QByteArray());
    }
    HttpRequest request;
    request.method = parts.takeFirst();
    request.target = parts.takeFirst();
    request.body = parts.takeFirst();
    request.local = QStringLiteral("127.0.0.1:8800");
    request.peer = QStringLiteral("127.0.0.1:1");
    for (const QByteArray& part : parts) {
        const int colon = part.indexOf(':');
        request.headers.append(HttpHeader{part.left(colon).toLower(), part.mid(colon + 1)});
    }
    return request;
}

/// A line's end in a header would be a header of the sender's own.
void checkReply(const HttpReply& reply) {
    demand(reply.status >= 200 && reply.status < 600);
    demand(!reply.type.contains('\n') && !reply.type.contains('\r'));
    for (const HttpHeader& header : reply.headers) {
        demand(!header.value.contains('\n') && !header.value.contains('\r'));
    }
    if (reply.type == "application/json") {
        demand(QJsonDocument::fromJson(reply.body).isObject());
    }
}

void ask(Page* page, const HttpRequest& request) {
    HttpReply refusal;
    if (!page->routes.passesHead(request, &refusal)) {
        checkReply(refusal);
        demand(refusal.status >= 400);
    }
    // Behind the checks nothing is to be taken for granted either.
    Answer answer = page->routes.answer(request);
    checkReply(answer.reply);
    if (answer.stream) {
        page->model.tick();
        demand(answer.stream->next().endsWith("\n\n"));
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static Page open((QByteArray()));
    static Page guarded((QByteArray(kToken)));
    const QByteArray input(reinterpret_cast<const char*>(data), static_cast<int>(size));
    const HttpRequest request = requestFrom(input);
    ask(&open, request);
    ask(&guarded, request);
    demand(guarded.writes == 0 || input.contains(kToken));
    return 0;
}
