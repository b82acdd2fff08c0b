#include "apps/micro800/serve/http/access_token.h"

#include <QList>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <array>

#include "apps/micro800/base/problem.h"

QByteArray newAccessToken() {
    std::array<quint32, 4> words;
    QRandomGenerator::system()->generate(words.begin(), words.end());
    return QByteArray(reinterpret_cast<const char*>(words.data()), sizeof words).toHex();
}

bool isAccessToken(const QString& text, QString* problem) {
    static const QRegularExpression form(QStringLiteral(R"(\A[A-Za-z0-9._~-]{8,128}\z)"));
    return form.match(text).hasMatch() ||
           fail(problem,
                QStringLiteral("a token has 8 to 128 letters, digits, and characters of -._~"));
}

bool isSameToken(const QByteArray& given, const QByteArray& token) {
    unsigned difference = given.size() == token.size() && !token.isEmpty() ? 0 : 1;
    for (int i = 0; i < given.size(); ++i) {
        const char other = token.isEmpty() ? '\0' : token.at(i % token.size());
        difference |= static_cast<unsigned char>(given.at(i) ^ other);
    }
    return difference == 0;
}

QByteArray tokenFromCookies(const QByteArray& header) {
    const QByteArray wanted = QByteArray(kTokenCookie) + '=';
    QByteArray token;
    int found = 0;
    for (const QByteArray& part : header.split(';')) {
        const QByteArray cookie = part.trimmed();
        if (cookie.startsWith(wanted)) {
            token = cookie.mid(wanted.size());
            ++found;
        }
    }
    return found == 1 ? token : QByteArray();
}

QByteArray tokenFromAuthorization(const QByteArray& header) {
    const QByteArray scheme = "Bearer ";
    return header.left(scheme.size()).toLower() == scheme.toLower()
               ? header.mid(scheme.size()).trimmed()
               : QByteArray();
}
