#include <cstdint>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>
#include <unicode/unistr.h>

#include "support/PlainSearch.h"
#include "text/CaseFold.h"

namespace valdorn {
namespace {

std::string utf8(const std::u32string& text) {
    std::string bytes;
    for (const char32_t c : text)
        icu::UnicodeString(static_cast<UChar32>(c)).toUTF8String(bytes);
    return bytes;
}

bool found(const CaseFold& fold, std::string_view text, std::string_view query) {
    return CaseFold::contains(fold.key(text), fold.key(query));
}

const CaseFold common("C");
const CaseFold turkish("tr_TR.UTF-8");

bool finds(const std::u32string& text, const std::u32string& query) {
    return found(common, utf8(text), utf8(query));
}

bool findsInTurkish(const std::u32string& text, const std::u32string& query) {
    return found(turkish, utf8(text), utf8(query));
}

// Behind a character of two UTF-16 units, which is one step and not two.
TEST(CaseFoldTest, SeesTheMarkBehindALargeCharacter) {
    EXPECT_FALSE(finds(U"\u00C9\U00010400e\u0301", U"e"));
    EXPECT_TRUE(finds(U"\u00C9\U00010400e\u0301", U"\u00E9"));
}

TEST(CaseFoldTest, LooksAtAllThatIcuCanCount) {
    EXPECT_EQ(CaseFold::searchedBytes, 2147483647U);
}

TEST(CaseFoldTest, FindsAsciiWhateverItsCase) {
    EXPECT_TRUE(finds(U"level=warning job 7", U"JOB"));
    EXPECT_TRUE(finds(U"Starting Runner Daemon", U"runner d"));
    EXPECT_TRUE(finds(U"abc", U"abc"));
    EXPECT_FALSE(finds(U"abc", U"abcd"));
    EXPECT_FALSE(finds(U"abc", U"ac"));
    EXPECT_TRUE(finds(U"aab", U"AB"));
}

TEST(CaseFoldTest, TheEmptyQueryIsInEverything) {
    EXPECT_TRUE(finds(U"", U""));
    EXPECT_TRUE(finds(U"abc", U""));
    EXPECT_TRUE(finds(U"\u0301", U""));
    EXPECT_FALSE(finds(U"", U"a"));
}

TEST(CaseFoldTest, FoldsAsciiLettersAndNoOtherSignsAtAnyPlace) {
    for (int c = 0; c < 0x80; ++c) {
        const bool capital = c >= 'A' && c <= 'Z';
        const std::string small(1, static_cast<char>(capital ? c + 32 : c));
        for (std::size_t before = 0; before < 9; ++before) {
            const std::string padding(before, '.');
            EXPECT_EQ(common.key(padding + static_cast<char>(c) + "..").text,
                      padding + small + "..")
                << c;
        }
    }
}

TEST(CaseFoldTest, FoldsFully) {
    EXPECT_TRUE(finds(U"STRASSE", U"straße"));
    EXPECT_TRUE(finds(U"straße", U"STRASSE"));
    EXPECT_TRUE(finds(U"STRA\u1E9EE", U"strasse"));
    EXPECT_TRUE(finds(U"ΟΔΟΣ ΟΔΥΣΣΕΩΣ", U"οδος οδυσσεως"));
    EXPECT_TRUE(finds(U"\uFB01le not found", U"FILE"));
    EXPECT_TRUE(finds(U"file", U"\uFB01LE"));
    EXPECT_TRUE(finds(U"300 \u212A", U"300 k"));
    EXPECT_TRUE(finds(U"ПРИВЕТ, Ёлка", U"привет, ёЛКА"));
    EXPECT_TRUE(finds(U"\U00010400", U"\U00010428"));  // Deseret, beyond 16 bits
}

TEST(CaseFoldTest, APartOfALigatureIsNotInIt) {
    EXPECT_FALSE(finds(U"ß", U"s"));
    EXPECT_FALSE(finds(U"\uFB01", U"f"));
    EXPECT_FALSE(finds(U"\uFB01", U"i"));
    EXPECT_FALSE(finds(U"\uFB01le", U"il"));
    EXPECT_TRUE(finds(U"\uFB01le", U"l"));
    EXPECT_TRUE(finds(U"\uFB01le if", U"I"));  // a later one that counts
}

TEST(CaseFoldTest, CanonicallyEqualSpellingsAreEqual) {
    EXPECT_TRUE(finds(U"caf\u00E9", U"CAFE\u0301"));
    EXPECT_TRUE(finds(U"cafe\u0301", U"CAF\u00C9"));
    EXPECT_TRUE(finds(U"q\u0307\u0323", U"Q\u0323\u0307"));  // marks in another order
    EXPECT_TRUE(finds(U"\u212B", U"a\u030A"));               // Angstrom
    EXPECT_TRUE(finds(U"\uD55C\uAE00", U"\u1112\u1161\u11AB"));
    EXPECT_TRUE(finds(U"\u1112\u1161\u11AB", U"\uD55C"));
    EXPECT_TRUE(finds(U"\u1FB3\u0323", U"\u03B1\u0323\u0345"));
    EXPECT_TRUE(
        finds(U"\u1FB3\u0323", U"\u03B1\u0323\u03B9"));  // a subscript is a letter when folded
    EXPECT_TRUE(findsInTurkish(U"\u03AA\u0301", U"\u0390"));
}

TEST(CaseFoldTest, ALetterIsNotInTheSameLetterWithAMark) {
    EXPECT_FALSE(finds(U"caf\u00E9", U"cafe"));
    EXPECT_FALSE(finds(U"cafe\u0301", U"cafe"));
    EXPECT_FALSE(finds(U"caf\u00E9 au lait", U"e"));
    EXPECT_TRUE(finds(U"caf\u00E9 verte", U"e"));
    EXPECT_FALSE(finds(U"e\u0301\u0323", U"e\u0301"));
    EXPECT_FALSE(finds(U"\u1FB3", U"\u03B1"));
    EXPECT_FALSE(finds(U"\u1FB3", U"\u03B9"));
}

TEST(CaseFoldTest, AMarkAloneIsFoundOnlyWhereItStandsAlone) {
    EXPECT_FALSE(finds(U"e\u0301", U"\u0301"));
    EXPECT_FALSE(finds(U"\u00E9", U"\u0301"));
    EXPECT_FALSE(finds(U"a \u0301", U"\u0301"));
    EXPECT_TRUE(finds(U"\u0301a", U"\u0301"));
    EXPECT_FALSE(finds(U"\u0301\u0301", U"\u0301"));
    EXPECT_TRUE(finds(U"a\n\u0301", U"\u0301"));
}

TEST(CaseFoldTest, APartOfASyllableIsNotInIt) {
    EXPECT_FALSE(finds(U"\uD55C", U"\u1112"));
    EXPECT_FALSE(finds(U"\uD55C", U"\uD558"));  // without its final consonant
    EXPECT_TRUE(finds(U"\uD558\uD55C", U"\uD558"));
}

TEST(CaseFoldTest, APartOfAnEmojiIsNotInIt) {
    const std::u32string family = U"\U0001F468\u200D\U0001F469\u200D\U0001F467";
    EXPECT_TRUE(finds(U"the " + family + U"!", family));
    EXPECT_FALSE(finds(family, U"\U0001F468"));
    EXPECT_FALSE(finds(family, U"\U0001F467"));
    EXPECT_FALSE(finds(family, U"\u200D"));
    EXPECT_FALSE(finds(U"\U0001F44D\U0001F3FD", U"\U0001F44D"));
    EXPECT_TRUE(finds(U"ok\U0001F44D\U0001F3FD", U"\U0001F44D\U0001F3FD"));
    EXPECT_FALSE(finds(U"1\uFE0F\u20E3", U"1"));
    EXPECT_TRUE(finds(U"a\U0001F680b", U"\U0001F680B"));
}

TEST(CaseFoldTest, FlagsAreFoundWholeAndInStep) {
    const std::u32string de = U"\U0001F1E9\U0001F1EA";
    const std::u32string es = U"\U0001F1EA\U0001F1F8";
    EXPECT_TRUE(finds(U"go " + de + es, es));
    EXPECT_FALSE(finds(de, U"\U0001F1E9"));
    EXPECT_FALSE(finds(de, U"\U0001F1EA"));
    EXPECT_FALSE(finds(de + U"\U0001F1F8", es));  // D E S: the E goes with the D
    EXPECT_TRUE(finds(de + U"\U0001F1F8", U"\U0001F1F8"));
}

TEST(CaseFoldTest, CarriageReturnAndLineFeedAreOneCharacter) {
    EXPECT_FALSE(finds(U"a\r\nb", U"\r"));
    EXPECT_FALSE(finds(U"a\r\nb", U"\nB"));
    EXPECT_FALSE(finds(U"a\r\nb", U"a\r"));
    EXPECT_TRUE(finds(U"a\r\nb", U"A\r\nB"));
    EXPECT_TRUE(finds(U"a\rb\n", U"\r"));
    EXPECT_TRUE(finds(U"a\rb\n", U"\n"));
    EXPECT_FALSE(finds(U"\u00C9\r\n\u00C9", U"\n"));
    EXPECT_FALSE(finds(U"\u00C9\r\n\u00C9", U"\u00E9\r"));
}

TEST(CaseFoldTest, ASignThatLeansOnTheNextCharacterGoesWithIt) {
    EXPECT_FALSE(finds(U"\u0600Ab", U"a"));
    EXPECT_TRUE(finds(U"\u0600Ab", U"\u0600a"));
    EXPECT_TRUE(finds(U"\u0600Ab", U"b"));
    EXPECT_FALSE(finds(U"\u0600A\u0301b", U"\u0600a"));
}

TEST(CaseFoldTest, NullsAreOrdinary) {
    const std::string text("A\0B", 3);
    EXPECT_TRUE(found(common, text, std::string("\0b", 2)));
    EXPECT_TRUE(found(common, text, std::string("\0", 1)));
    EXPECT_FALSE(found(common, text, std::string("\0a", 2)));
    EXPECT_TRUE(found(common, text, "b"));
}

TEST(CaseFoldTest, IllFormedBytesCountAsTheReplacementCharacter) {
    for (const std::string bytes : {"\xFF", "\x80", "\xC3", "\xE2\x82", "\xF0\x9F\x90"}) {
        for (const std::string after : {"", "z", "zz", "\xC3\xA9", "\xE2\x82\xAC"}) {
            EXPECT_EQ(common.key("Abc" + bytes + after).text,
                      common.key("Abc\xEF\xBF\xBD" + after).text);
            EXPECT_EQ(common.key("\xE2\x82\xAC" + bytes + after).text,
                      common.key("\xE2\x82\xAC\xEF\xBF\xBD" + after).text);
        }
    }
    EXPECT_EQ(common.key("\x80\x80").text, "\xEF\xBF\xBD\xEF\xBF\xBD");
}

TEST(CaseFoldTest, DotlessAndDottedIAreTwoLettersInTurkish) {
    EXPECT_TRUE(findsInTurkish(U"DIYARBAKIR", U"d\u0131yarbak\u0131r"));
    EXPECT_TRUE(findsInTurkish(U"\u0130stanbul", U"istanbul"));
    EXPECT_TRUE(findsInTurkish(U"I\u0307stanbul", U"istanbul"));
    EXPECT_FALSE(findsInTurkish(U"ISTANBUL", U"istanbul"));
    EXPECT_FALSE(findsInTurkish(U"\u0130", U"\u0131"));
    EXPECT_TRUE(findsInTurkish(U"M\u0130LL\u00CE", U"mill\u00EE"));
    EXPECT_TRUE(findsInTurkish(U"LEVEL ERROR", U"level error"));
    EXPECT_TRUE(findsInTurkish(U"xI\u00C9I", U"\u0131\u00E9\u0131"));
    EXPECT_TRUE(findsInTurkish(U"STRASSE", U"straße"));
}

TEST(CaseFoldTest, CapitalIGoesWithSmallIElsewhere) {
    EXPECT_TRUE(finds(U"ISTANBUL", U"istanbul"));
    EXPECT_FALSE(finds(U"I", U"\u0131"));
    EXPECT_FALSE(finds(U"\u0130stanbul", U"istanbul"));
    EXPECT_TRUE(finds(U"\u0130stanbul", U"i\u0307STANBUL"));
}

TEST(CaseFoldTest, TellsTheLanguageFromTheLocalesName) {
    for (const std::string name : {"tr", "tr_TR", "tr_TR.UTF-8", "tr-TR", "tr.UTF-8", "tr@euro",
                                   "TR", "az", "az_AZ", "az_Latn_AZ"})
        EXPECT_TRUE(found(CaseFold(name), "I", "\xC4\xB1")) << name;
    for (const std::string name : {"", "C", "POSIX", "C.UTF-8", "en_US.UTF-8", "de_TR", "try", "t",
                                   "az1", "_tr", "\xFF\xFE", "en@tr", " tr"})
        EXPECT_TRUE(found(CaseFold(name), "I", "i")) << name;
}

using namespace std::string_literals;

std::string randomText(std::mt19937& random, std::size_t longest) {
    static const std::u32string alphabet =
        U"aAeEiIsSfkK. \r\n\u0000\u0301\u0307\u0323\u0345\u200D\uFE0F\u00E9\u00C9\u00DF\u0130\u0131"
        U"\u03B1\u03C2\u03A3\u1FB3\u212A\u1100\u1161\u11A8\uAC00\uAC01\u0600\u4E2D\u0439\u0418"
        U"\uFB01\uFFFD\U0001F1E9\U0001F1EA\U0001F44D\U0001F3FD\U0001F468\U0001F469"s;
    std::u32string text;
    for (std::size_t left = random() % (longest + 1); left > 0; --left)
        text += alphabet[random() % alphabet.size()];
    return utf8(text);
}

TEST(CaseFoldTest, FindsWhatAPlainSearchFinds) {
    for (const bool isTurkic : {false, true}) {
        const CaseFold& fold = isTurkic ? turkish : common;
        PlainSearch plain(isTurkic);
        int hits = 0;
        for (std::uint32_t seed = 1; seed <= 4000; ++seed) {
            std::mt19937 random(seed);
            const std::string query = randomText(random, 3);
            const std::string text =
                randomText(random, 8) + (seed % 3 == 0 ? query : "") + randomText(random, 8);
            const bool expected = plain.finds(text, query);
            hits += expected ? 1 : 0;
            ASSERT_EQ(found(fold, text, query), expected)
                << "seed " << seed << (isTurkic ? " in Turkish: " : ": ")
                << testing::PrintToString(text) << " / " << testing::PrintToString(query);
        }
        EXPECT_GT(hits, 1000);
    }
}

TEST(CaseFoldTest, HeapOfMarksIsFoundAndFoldedInStretches) {
    std::u32string heap = U"E";
    for (int mark = 0; mark < 20000; ++mark)
        heap += mark % 2 == 0 ? U'\u0316' : U'\u0301';
    EXPECT_TRUE(finds(U"x" + heap + U"y", U"Y"));
    EXPECT_TRUE(finds(U"x" + heap + U"y", U"e" + heap.substr(1)));
    EXPECT_FALSE(finds(U"x" + heap + U"y", U"e"));
    // Put into order as a whole, all marks below would come before all above.
    std::string bytes;
    icu::UnicodeString::fromUTF32(reinterpret_cast<const UChar32*>(heap.data()),
                                  static_cast<std::int32_t>(heap.size()))
        .toUTF8String(bytes);
    const std::string key = common.key(bytes).text;
    EXPECT_LT(key.find("\u0301"), 100U);
}

TEST(CaseFoldTest, StretchesOfAHeapOfMarksEndBetweenCodePoints) {
    for (std::size_t before = 0; before < 130; ++before) {
        const std::u32string text = U"e" + std::u32string(before, U'\u0301') + U"\U0001D165";
        EXPECT_EQ(common.key(utf8(text)).text.find("\xEF\xBF\xBD"), std::string::npos) << before;
    }
}

TEST(CaseFoldTest, EveryCharacterIsFoundInItsOtherCasesAndSpellings) {
    UErrorCode status = U_ZERO_ERROR;
    const auto* const composed = icu::Normalizer2::getNFCInstance(status);
    const auto* const decomposed = icu::Normalizer2::getNFDInstance(status);
    for (UChar32 c = 0; c <= 0x10FFFF; ++c) {
        if (c >= 0xD800 && c <= 0xDFFF)  // no characters
            continue;
        const icu::UnicodeString character(c);
        const auto key = [](const icu::UnicodeString& text) {
            std::string bytes;
            return common.key(text.toUTF8String(bytes)).text;
        };
        const std::string expected = key(character);
        ASSERT_EQ(key(composed->normalize(character, status)), expected) << c;
        ASSERT_EQ(key(decomposed->normalize(character, status)), expected) << c;
        ASSERT_EQ(key(icu::UnicodeString(character).foldCase()), expected) << c;
    }
}

}  // namespace
}  // namespace valdorn
