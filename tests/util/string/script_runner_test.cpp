#include "util/string/script_runner.h"

#include <gtest/gtest.h>

#include <chrono>

namespace skarnel {
namespace {

using namespace std::chrono_literals;

std::optional<ScriptDescriptor> run(std::u16string_view source, ScriptLimits limits = {}) {
    JavaScriptRunner runner(limits);
    const std::unique_ptr<Script> script = runner.scriptWithSource(NSString(source));
    return script ? script->execute() : std::nullopt;
}

/// The result's text; "(no result)" where there is none.
std::optional<NSString> textOf(std::u16string_view source, ScriptLimits limits = {}) {
    const std::optional<ScriptDescriptor> result = run(source, limits);
    return result ? result->stringValue() : u"(no result)"_ns;
}

TEST(ScriptDescriptor, ItemsCountFromOne) {
    const ScriptDescriptor list = ScriptDescriptor::list(
        {ScriptDescriptor(kDescriptorText, u"a"_ns), ScriptDescriptor(kDescriptorNull)});
    EXPECT_EQ(list.descriptorType(), 0x6c697374U);
    EXPECT_EQ(list.numberOfItems(), 2U);
    EXPECT_FALSE(list.descriptorAtIndex(0));
    EXPECT_EQ(list.descriptorAtIndex(1)->stringValue(), u"a"_ns);
    EXPECT_EQ(list.descriptorAtIndex(2)->stringValue(), std::nullopt);
    EXPECT_FALSE(list.descriptorAtIndex(3));
    EXPECT_EQ(list.stringValue(), std::nullopt);
}

TEST(JavaScript, TextsNumbersAndBooleansHaveTheirText) {
    EXPECT_EQ(textOf(u"'a' + 'b'"), u"ab"_ns);
    EXPECT_EQ(textOf(u"6 * 7"), u"42"_ns);
    EXPECT_EQ(textOf(u"0.5 - 1"), u"-0.5"_ns);
    EXPECT_EQ(textOf(u"1 / 0"), u"Infinity"_ns);
    EXPECT_EQ(textOf(u"1 < 2"), u"true"_ns);
    EXPECT_EQ(textOf(u"''"), u""_ns);
}

TEST(JavaScript, TextIsCarriedUnitForUnit) {
    const std::u16string source = u"'\u00E9\u4E2D\U0001F600'";
    EXPECT_EQ(textOf(source), NSString(u"\u00E9\u4E2D\U0001F600"));
    EXPECT_EQ(textOf(u"'\\uD83D'"), NSString(std::u16string{0xD83D}));
    EXPECT_EQ(textOf(u"'\u4E2D\U0001F600'.length"), u"3"_ns);
    EXPECT_EQ(textOf(u"'a\\u0000b'"), NSString(std::u16string{u'a', 0, u'b'}));
}

TEST(JavaScript, AListHasItsItems) {
    const auto list = run(u"['a', 2, null, [3], {}]");
    ASSERT_TRUE(list);
    EXPECT_EQ(list->descriptorType(), kDescriptorList);
    EXPECT_EQ(list->numberOfItems(), 5U);
    EXPECT_EQ(list->descriptorAtIndex(1)->stringValue(), u"a"_ns);
    EXPECT_EQ(list->descriptorAtIndex(2)->stringValue(), u"2"_ns);
    EXPECT_EQ(list->descriptorAtIndex(3)->descriptorType(), kDescriptorNull);
    EXPECT_EQ(list->descriptorAtIndex(4)->descriptorType(), kDescriptorRecord);
    EXPECT_EQ(list->descriptorAtIndex(5)->stringValue(), std::nullopt);
    ASSERT_TRUE(run(u"[]"));
    EXPECT_EQ(run(u"[]")->numberOfItems(), 0U);
}

TEST(JavaScript, OtherResultsHaveNoText) {
    EXPECT_EQ(textOf(u"null"), std::nullopt);
    EXPECT_EQ(textOf(u"undefined"), std::nullopt);
    EXPECT_EQ(textOf(u"var a = 1;"), std::nullopt);
    EXPECT_EQ(textOf(u"({a: 1})"), std::nullopt);
    EXPECT_EQ(textOf(u"(function () {})"), std::nullopt);
}

TEST(JavaScript, AnErrorGivesNothing) {
    EXPECT_FALSE(run(u"throw 1"));
    EXPECT_FALSE(run(u"this is no script"));
    EXPECT_FALSE(run(u"missing.thing"));
    EXPECT_FALSE(
        run(u"var a = [1]; Object.defineProperty(a, 0, {get: function () { throw 1; }}); a"));
}

TEST(JavaScript, EachScriptStartsAfresh) {
    EXPECT_EQ(textOf(u"leftover = 5; leftover"), u"5"_ns);
    EXPECT_EQ(textOf(u"typeof leftover"), u"undefined"_ns);
}

TEST(JavaScript, ReachesNeitherFilesNorNetworkNorProcesses) {
    EXPECT_EQ(
        textOf(u"[typeof require, typeof load, typeof readFile, typeof XMLHttpRequest, "
               u"typeof fetch, typeof process, typeof print, typeof alert].join()"),
        u"undefined,undefined,undefined,undefined,undefined,undefined,undefined,undefined"_ns);
}

TEST(JavaScript, StopsAtTheTimeLimit) {
    const auto before = std::chrono::steady_clock::now();
    EXPECT_FALSE(run(u"while (true) {}", {.time = 200ms}));
    EXPECT_FALSE(
        run(u"/(a*)*b/.test('aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa')", {.time = 200ms}));
    EXPECT_FALSE(run(u"try { while (true) {} } catch (e) {}; 1", {.time = 200ms}));
    const auto taken = std::chrono::steady_clock::now() - before;
    EXPECT_GE(taken, 400ms) << "the two loops use theirs up; the search may give up earlier";
    EXPECT_LT(taken, 20s);
}

TEST(JavaScript, AnyTimeLimitIsTakenAsOneWithinItsRange) {
    EXPECT_FALSE(run(u"while (true) {}", {.time = 0ms}));
    EXPECT_FALSE(run(u"while (true) {}", {.time = -5ms}));
    EXPECT_EQ(textOf(u"1", {.time = std::chrono::milliseconds::max()}), u"1"_ns);
}

TEST(JavaScript, StopsAtTheMemoryLimit) {
    const ScriptLimits tight{.time = 10s, .memoryBytes = 4U << 20};
    EXPECT_FALSE(run(u"var s = 'x'; while (true) s += s", tight));
    EXPECT_FALSE(run(u"var a = []; while (true) a.push({})", tight));
    EXPECT_EQ(textOf(u"var s = 'x'; while (s.length < 100000) s += s; s.length", tight),
              u"131072"_ns);
    EXPECT_FALSE(run(u"1", {.memoryBytes = 100})) << "the engine itself does not fit";
}

TEST(JavaScript, AResultThatIsSmallInTheEngineOnlyStopsAtTheMemoryLimit) {
    const ScriptLimits tight{.time = 60s, .memoryBytes = 4U << 20};
    // Four thousand million items that take no memory, and two thousand times the same megabyte.
    const auto before = std::chrono::steady_clock::now();
    EXPECT_FALSE(run(u"new Array(4294967295)", tight));
    EXPECT_FALSE(
        run(u"var s = 'x', a = []; while (s.length < 1000000) s += s; "
            u"while (a.length < 2000) a.push(s); a",
            tight));
    EXPECT_LT(std::chrono::steady_clock::now() - before, 30s);
    EXPECT_EQ(run(u"new Array(1000)", tight)->numberOfItems(), 1000U);
}

TEST(JavaScript, DeepRecursionIsAnErrorOfTheScript) {
    EXPECT_FALSE(run(u"function f() { return f() + 1; } f()"));
    EXPECT_EQ(textOf(u"function f() { return f() + 1; } try { f() } catch (e) { 'caught' }"),
              u"caught"_ns);
}

TEST(JavaScript, ALongTextComesBackWhole) {
    const auto text = textOf(u"new Array(1000001).join('ab')");
    ASSERT_TRUE(text);
    EXPECT_EQ(text->length(), 2'000'000U);
}

}  // namespace
}  // namespace skarnel
