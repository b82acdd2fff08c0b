#include "apps/micro800/serve/help/troubleshooting_page.h"

#include <gtest/gtest.h>

#include "apps/micro800/serve/help/help_links.h"
#include "unit/apps/micro800/qt_printers.h"

namespace {

TEST(TroubleshootingHtml, MakesOnlyItsOwnTags) {
    const QByteArray html = htmlPage(
        "# A <b> `c <d>`\n\ntext <script>alert(1)</script> & [e](#a-b) [f](g.md) "
        "[h](javascript:x)\n"
        "\n- one\n- two <i>\n\n```sh\nls <x>\n| no | table |\n```\n"
        "\n| text | means |\n|---|---|\n| `AB error: 0005H` <td> | x |\n");
    for (const char* none : {"<b>", "<d>", "<script", "<i>", "<x>", "javascript:", "g.md"}) {
        EXPECT_FALSE(html.contains(none)) << none;
    }
    for (const char* there : {"<h1 id=\"a-b-c-d\">A &lt;b&gt; <code>c &lt;d&gt;</code></h1>",
                              "<a href=\"#a-b\">e</a>", "<ul>\n<li>one<li>two &lt;i&gt;</ul>",
                              "<pre>ls &lt;x&gt;\n| no | table |\n</pre>", "<th>text</th>",
                              "<td><span id=\"ab-error-0005h\"></span><code>AB error: 0005H</code> "
                              "&lt;td&gt;</td>"}) {
        EXPECT_TRUE(html.contains(there)) << there << "\n" << html.constData();
    }
}

TEST(TroubleshootingHtml, EveryLinkOfAFailureLeadsSomewhere) {
    HelpLinks links;
    for (const char* reason :
         {"AB error: 0005H", "AB error: 0004H", "AB error: 01FFH, 2105H", "Connection refused(111)",
          "Verbindungsaufbau abgelehnt(111)", "Internal: receive timeout", "can not open database",
          "invalid data size", "MR error: 0001H, 0113H"}) {
        const QString link =
            links.linkFor("DINT0:A", QString("read DINT0:A> %1").arg(QLatin1String(reason)));
        ASSERT_TRUE(link.startsWith("/troubleshooting#")) << reason;
        const QByteArray anchor = "id=\"" + link.section('#', 1).toUtf8() + '"';
        EXPECT_EQ(troubleshootingPage().count(anchor), 1) << anchor.constData();
    }
    EXPECT_EQ(links.linkFor("DINT0:A", "something else"), QString());
    EXPECT_EQ(links.linkFor("DINT0:A", ""), QString());
}

}  // namespace
