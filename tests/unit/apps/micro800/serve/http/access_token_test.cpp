#include "apps/micro800/serve/http/access_token.h"

#include <gtest/gtest.h>

#include "unit/apps/micro800/qt_printers.h"

namespace {

TEST(AccessToken, IsMadeOfTheSystemsRandomBytes) {
    const QByteArray one = newAccessToken();
    EXPECT_EQ(one.size(), 32);
    EXPECT_EQ(QByteArray::fromHex(one).toHex(), one);
    EXPECT_NE(one, newAccessToken());
    QString problem;
    EXPECT_TRUE(isAccessToken(one, &problem));
}

TEST(AccessToken, OfAUserNeedsNoEscape) {
    QString problem;
    for (const char* good : {"12345678", "a.b-c_d~", "0123456789abcdef0123456789abcdef"}) {
        EXPECT_TRUE(isAccessToken(good, &problem)) << good;
    }
    for (const QString& bad :
         {QString(), QString("1234567"), QString("1234 5678"), QString("12345678\n"),
          QString("1234567%"), QString("12345678;"), QString(129, 'a'), QString("1234567\u00e4")}) {
        EXPECT_FALSE(isAccessToken(bad, &problem)) << qPrintable(bad);
        EXPECT_FALSE(problem.contains("1234567"));
    }
}

TEST(AccessToken, IsTheSameAsAWhole) {
    EXPECT_TRUE(isSameToken("secret-token", "secret-token"));
    for (const char* other : {"", "secret-toke", "secret-tokenn", "secret-tokem", "Secret-token",
                              "secret-tokensecret-token"}) {
        EXPECT_FALSE(isSameToken(other, "secret-token")) << other;
    }
    EXPECT_FALSE(isSameToken("", ""));
    EXPECT_FALSE(isSameToken("x", ""));
}

TEST(AccessToken, FromCookies) {
    EXPECT_EQ(tokenFromCookies("micro800_token=abc"), QByteArray("abc"));
    EXPECT_EQ(tokenFromCookies("a=b; micro800_token=abc; c"), QByteArray("abc"));
    for (const char* none : {"", "a=b", "xmicro800_token=abc", "micro800_token", "=;=;",
                             "micro800_token=abc; micro800_token=abd", "Micro800_token=abc"}) {
        EXPECT_EQ(tokenFromCookies(none), QByteArray()) << none;
    }
}

TEST(AccessToken, FromAuthorization) {
    EXPECT_EQ(tokenFromAuthorization("Bearer abc"), QByteArray("abc"));
    EXPECT_EQ(tokenFromAuthorization("bearer  abc "), QByteArray("abc"));
    for (const char* none : {"", "abc", "Basic abc", "Bearer", "Bearerabc"}) {
        EXPECT_EQ(tokenFromAuthorization(none), QByteArray()) << none;
    }
}

}  // namespace
