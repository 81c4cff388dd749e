#include "Quillet/values/Base64.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <string>

#include "support/Seed.h"
#include "support/TestHelpers.h"

namespace {

using namespace quillet::test;

constexpr char Alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

std::string Encoded(const CComVariant& bytes) {
    std::string text;
    quillet::AppendBase64(bytes, text);
    return text;
}

std::string Encoded(const std::string& bytes) {
    return Encoded(ByteArray(bytes));
}

std::string Decoded(const CString& text) {
    CComVariant value("what stood there before");
    quillet::DecodeBase64(text.View(), value);
    const ArrayContent content = ContentOf(value);
    EXPECT_EQ(content.m_lower, 0);
    return content.m_bytes;
}

// The rules of the format, group by group.
std::string PlainlyEncoded(const std::string& bytes) {
    std::string text;
    int lineCounter = 0;
    for (std::size_t at = 0; at < bytes.size(); at += 3) {
        const std::string group = bytes.substr(at, 3);
        std::uint32_t bits = 0;
        for (std::size_t i = 0; i < 3; ++i) {
            bits = bits << 8 | (i < group.size() ? static_cast<unsigned char>(group[i]) : 0U);
        }
        for (std::size_t i = 0; i < 4; ++i) {
            text += i <= group.size() ? Alphabet[bits >> (18 - 6 * i) & 63U] : '=';
        }
        if (group.size() < 3) {
            break;
        }
        if (lineCounter == 18) {
            text += "\r\n ";
            lineCounter = 0;
        } else {
            ++lineCounter;
        }
    }
    return text;
}

std::string RandomBytes(std::mt19937& random, std::size_t count) {
    std::string bytes;
    for (std::size_t i = 0; i < count; ++i) {
        bytes += static_cast<char>(random() & 0xFFU);
    }
    return bytes;
}

TEST(Base64, Encode_EveryTailLength_IsPadded) {
    EXPECT_EQ(Encoded(std::string()), "");
    EXPECT_EQ(Encoded(std::string("A")), "QQ==");
    EXPECT_EQ(Encoded(std::string("AB")), "QUI=");
    EXPECT_EQ(Encoded(std::string("ABC")), "QUJD");
    EXPECT_EQ(Encoded(std::string("ABCD")), "QUJDRA==");
    EXPECT_EQ(Encoded(std::string("\xFB\xFF\xBF")), "+/+/");
}

TEST(Base64, Encode_AppendsToWhatStands) {
    std::string text = "before ";
    quillet::AppendBase64(ByteArray("ABC"), text);
    EXPECT_EQ(text, "before QUJD");
}

TEST(Base64, Encode_FiftySevenBytes_EndInALineBreak) {
    const std::string text = Encoded(std::string(57, 'x'));
    EXPECT_EQ(text.size(), 79U);
    EXPECT_EQ(text.substr(76), "\r\n ");
    EXPECT_EQ(text.find('\r'), 76U);
}

TEST(Base64, Encode_FiftyEightBytes_PadBehindTheLineBreak) {
    const std::string text = Encoded(std::string(58, '\0'));
    EXPECT_EQ(text.substr(76), "\r\n AA==");
}

TEST(Base64, Encode_FiftySixBytes_NeverBreakBehindAPaddedGroup) {
    const std::string text = Encoded(std::string(56, '\0'));
    EXPECT_EQ(text.size(), 76U);
    EXPECT_EQ(text.find('\r'), std::string::npos);
}

TEST(Base64, Encode_TwoFullLines_BreakTwice) {
    const std::string text = Encoded(std::string(114, '\0'));
    EXPECT_EQ(text, std::string(76, 'A') + "\r\n " + std::string(76, 'A') + "\r\n ");
}

TEST(Base64, Encode_LowerBoundAboveZero_CountsTheBytesPastTheEndAsZero) {
    EXPECT_EQ(Encoded(ByteArray(std::string(1, '\0'), 1)), "AAA=");
    EXPECT_EQ(Encoded(ByteArray("ABC", 3)), Encoded(std::string("ABC\0\0\0", 6)));
}

TEST(Base64, Encode_LowerBoundBelowZero_TakesOneByteLessPerUnit) {
    EXPECT_EQ(Encoded(ByteArray("ABC", -1)), "QUI=");
    EXPECT_EQ(Encoded(ByteArray("ABC", -3)), "");
    EXPECT_EQ(Encoded(ByteArray("ABC", -100)), "");
}

TEST(Base64, Encode_EmptyArrayWithLowerBoundOne_IsOneZeroByte) {
    EXPECT_EQ(Encoded(ByteArray("", 1)), "AA==");
}

TEST(Base64, Encode_ArrayWithoutDescriptor_IsNothing) {
    CComVariant value;
    value.vt = ByteArrayType;
    value.parray = nullptr;
    EXPECT_EQ(Encoded(value), "");
    value.vt = VT_EMPTY;
}

TEST(Base64, Encode_RandomBytes_MatchThePlainReference) {
    std::mt19937 random(quillet::test::Seed(20250101));
    for (std::size_t size = 0; size < 400; ++size) {
        const std::string bytes = RandomBytes(random, size);
        ASSERT_EQ(Encoded(bytes), PlainlyEncoded(bytes)) << size;
    }
}

TEST(Base64, Decode_EncodedRandomBytes_ComeBack) {
    std::mt19937 random(quillet::test::Seed(20250102));
    for (std::size_t size = 0; size < 400; ++size) {
        const std::string bytes = RandomBytes(random, size);
        ASSERT_EQ(Decoded(Encoded(bytes)), bytes) << size;
    }
}

TEST(Base64, Decode_LineBreaksAndBlanks_AreSkipped) {
    EXPECT_EQ(Decoded("QUJD\r\n RA=="), "ABCD");
    EXPECT_EQ(Decoded(" Q U\tJ\nD "), "ABC");
}

TEST(Base64, Decode_OtherCharacters_AreSkippedWhereverTheyStand) {
    EXPECT_EQ(Decoded("Q-U_J.D"), "ABC");
    EXPECT_EQ(Decoded("Q\u017CU\U0001F600JD\u00A0"), "ABC");
    EXPECT_EQ(Decoded(Units({'Q', 0xD800, 'U', 0xFFFF, 'J', 0x80, 'D'})), "ABC");
}

TEST(Base64, Decode_UnitsWhoseLowByteIsBase64_AreSkippedToo) {
    EXPECT_EQ(Decoded(Units({'Q', 0x0141, 'U', 0x4E41, 'J', 'D'})), "ABC");
}

TEST(Base64, Decode_UnpaddedTail_IsDropped) {
    EXPECT_EQ(Decoded("QUJDRA"), "ABC");
    EXPECT_EQ(Decoded("QUJDRAE"), "ABC");
    EXPECT_EQ(Decoded("QUJDR"), "ABC");
}

TEST(Base64, Decode_PaddingInFirstOrSecondPosition_EndsTheText) {
    EXPECT_EQ(Decoded("=QUJD"), "");
    EXPECT_EQ(Decoded("QUJD=QUJD"), "ABC");
    EXPECT_EQ(Decoded("QUJDQ=QUJD"), "ABC");
}

TEST(Base64, Decode_PaddingInThirdPosition_GivesOneByteAndEnds) {
    EXPECT_EQ(Decoded("QQ==QUJD"), "A");
    EXPECT_EQ(Decoded("QQ=QUJD"), "A");
    EXPECT_EQ(Decoded("QQ="), "A");
}

TEST(Base64, Decode_PaddingInFourthPosition_GivesTwoBytesAndEnds) {
    EXPECT_EQ(Decoded("QUI="), "AB");
    EXPECT_EQ(Decoded("QUI=QUJD"), "AB");
}

TEST(Base64, Decode_PaddingAfterSkippedCharacters_StillCounts) {
    EXPECT_EQ(Decoded("QQ \r\n = ="), "A");
    EXPECT_EQ(Decoded("QUI\r\n ="), "AB");
}

TEST(Base64, Decode_BitsBehindTheLastByte_AreDropped) {
    EXPECT_EQ(Decoded("QR=="), "A");
    EXPECT_EQ(Decoded("QUJ="), "AB");
}

TEST(Base64, Decode_EmptyText_IsAnArrayWithoutElements) {
    EXPECT_EQ(Decoded(""), "");
    EXPECT_EQ(Decoded("\r\n"), "");
}

// The rules of decoding one by one, over any units.
std::string PlainlyDecoded(const std::string& text) {
    const std::string alphabet(Alphabet);
    std::size_t at = 0;
    const auto next = [&]() -> int {
        while (at < text.size()) {
            const char unit = text[at++];
            const std::size_t value = alphabet.find(unit);
            if (value != std::string::npos) {
                return static_cast<int>(value);
            }
            if (unit == '=') {
                return 64;
            }
        }
        return 65;
    };
    std::string bytes;
    for (;;) {
        const int first = next();
        if (first >= 64) {
            return bytes;
        }
        const int second = next();
        if (second >= 64) {
            return bytes;
        }
        const int third = next();
        if (third == 65) {
            return bytes;
        }
        if (third == 64) {
            return bytes + static_cast<char>(first * 4 + second / 16);
        }
        const int fourth = next();
        if (fourth == 65) {
            return bytes;
        }
        bytes += static_cast<char>(first * 4 + second / 16);
        bytes += static_cast<char>(second % 16 * 16 + third / 4);
        if (fourth == 64) {
            return bytes;
        }
        bytes += static_cast<char>(third % 4 * 64 + fourth);
    }
}

TEST(Base64, Decode_RandomMalformedText_MatchesThePlainReference) {
    std::mt19937 random(quillet::test::Seed(20250103));
    const std::string units = std::string(Alphabet) + "==== \r\n-";
    for (int round = 0; round < 3000; ++round) {
        std::string text;
        for (std::size_t left = random() % 24; left > 0; --left) {
            text += units[random() % units.size()];
        }
        ASSERT_EQ(Decoded(text), PlainlyDecoded(text)) << text;
    }
}

}  // namespace
