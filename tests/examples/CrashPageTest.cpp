#include "examples/crash/Page.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

using crash::Report;

namespace
{

/// With the same text for everything that a report may name.
Report ReportOf(const std::string& text)
{
    Report report;
    report.code = report.description = report.address = report.program = report.system = report.path = text;
    report.modules = {{text, text, text, text, text}};
    report.stack = {{text, text, text, text, text, text, {{text, text, text, text, text, text, text}}, {}}};
    return report;
}

std::size_t Count(const std::string& text, const std::string& part)
{
    std::size_t count = 0;
    for (std::size_t place = text.find(part); place != std::string::npos; place = text.find(part, place + 1))
        ++count;
    return count;
}

}

TEST(CrashPageTest, NamesBecomeNeitherElementsNorAttributes)
{
    const std::string hostile =
        "</script></style></title>\"'><script>alert(1)</script><img src=x onerror=alert(1)>&lt;";
    const std::string page = PageText(ReportOf(hostile), {hostile}, hostile);
    const std::string harmless = PageText(ReportOf("text"), {"text"}, "text");
    for (const char* const part : {"<", ">", "<script", "<img", "<style", "<title", "\"", "'"})
        EXPECT_EQ(Count(page, part), Count(harmless, part)) << part;
    EXPECT_GE(Count(page, "&lt;/script&gt;&lt;/style&gt;"), 10u);
}

TEST(CrashPageTest, FetchesNothing)
{
    const std::string page = PageText(ReportOf("text"), {"text"}, "text");
    EXPECT_NE(page.find("content=\"default-src 'none'; style-src 'unsafe-inline'; script-src 'sha256-"),
              std::string::npos);
    for (const char* const part : {"http:", "https:", "src=", "href=", "url(", "@import"})
        EXPECT_EQ(page.find(part), std::string::npos) << part;
}

TEST(CrashPageTest, SaysThatAReportHasNoEnd)
{
    Report report = ReportOf("text");
    EXPECT_NE(PageText(report, {}, "").find("This report has no end"), std::string::npos);
    report.isWhole = true;
    EXPECT_EQ(PageText(report, {}, "").find("This report has no end"), std::string::npos);
}

TEST(CrashPageTest, WhatIsNotThereHasNoHeading)
{
    const std::string page = crash::PageText({}, {}, "");
    EXPECT_EQ(page.find("<h2>Log"), std::string::npos);
    EXPECT_EQ(page.find("System"), std::string::npos);
    EXPECT_NE(page.find("The report has no stack."), std::string::npos);
}

TEST(CrashPageTest, FirstFrameThatTellsSomethingIsOpen)
{
    Report report;
    report.stack.resize(3);
    report.stack[1].locals.resize(1);
    report.stack[2].path = "mill.cpp";
    const std::string page = PageText(report, {}, "");
    EXPECT_EQ(Count(page, "<details class=\"frame\""), 3u);
    EXPECT_EQ(Count(page, " open>"), 1u);
    EXPECT_LT(page.find(">#0<"), page.find(" open>"));
    EXPECT_LT(page.find(" open>"), page.find(">#1<"));
}
