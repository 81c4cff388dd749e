#include "Quillet/values/Base64.h"

#include <algorithm>
#include <array>
#include <vector>

namespace quillet {

namespace {

constexpr std::string_view Alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr char PaddingMark = '=';
constexpr std::string_view LineBreak = "\r\n ";
constexpr int GroupsPerLine = 19;

constexpr int NotBase64 = -1;
constexpr int Padding = -2;
constexpr int EndOfText = -3;

constexpr std::array<signed char, 128> MakeValues() {
    std::array<signed char, 128> values{};
    values.fill(NotBase64);
    for (std::size_t i = 0; i < Alphabet.size(); ++i) {
        values[static_cast<unsigned char>(Alphabet[i])] = static_cast<signed char>(i);
    }
    values[static_cast<unsigned char>(PaddingMark)] = Padding;
    return values;
}

constexpr std::array<signed char, 128> Values = MakeValues();

// Gives the values of the base64 characters of a text one by one.
class Reader {
public:
    explicit Reader(WideView text) : m_text(text) {}

    int Next() {
        while (m_position < m_text.size()) {
            const auto unit = static_cast<char16_t>(m_text[m_position++]);
            if (unit < Values.size() && Values[unit] != NotBase64) {
                return Values[unit];
            }
        }
        return EndOfText;
    }

private:
    WideView m_text;
    std::size_t m_position = 0;
};

std::vector<BYTE> Decode(WideView text) {
    std::vector<BYTE> bytes;
    bytes.reserve(text.size() / 4 * 3);
    Reader reader(text);
    for (;;) {
        const int first = reader.Next();
        const int second = first < 0 ? EndOfText : reader.Next();
        const int third = second < 0 ? EndOfText : reader.Next();
        if (third == EndOfText) {
            return bytes;
        }
        const int fourth = third == Padding ? Padding : reader.Next();
        if (fourth == EndOfText) {
            return bytes;
        }
        bytes.push_back(static_cast<BYTE>(first << 2 | second >> 4));
        if (third == Padding) {
            return bytes;
        }
        bytes.push_back(static_cast<BYTE>((second & 0x0F) << 4 | third >> 2));
        if (fourth == Padding) {
            return bytes;
        }
        bytes.push_back(static_cast<BYTE>((third & 0x03) << 6 | fourth));
    }
}

}  // namespace

std::vector<BYTE> BytesOf(const CComVariant& value) {
    std::vector<BYTE> bytes;
    LONG lower = 0;
    LONG upper = -1;
    if (FAILED(SafeArrayGetLBound(value.parray, 1, &lower)) ||
        FAILED(SafeArrayGetUBound(value.parray, 1, &upper)) || upper < 0) {
        return bytes;
    }
    bytes.resize(static_cast<std::size_t>(upper) + 1);
    const LONGLONG held = static_cast<LONGLONG>(upper) - lower + 1;
    void* data = nullptr;
    if (held > 0 && SUCCEEDED(SafeArrayAccessData(value.parray, &data))) {
        const auto* first = static_cast<const BYTE*>(data);
        std::copy_n(first, std::min(static_cast<std::size_t>(held), bytes.size()), bytes.begin());
        SafeArrayUnaccessData(value.parray);
    }
    return bytes;
}

void AppendBase64(const CComVariant& value, std::string& out) {
    const std::vector<BYTE> bytes = BytesOf(value);
    const auto digit = [&](unsigned int bits) { out += Alphabet[bits & 0x3FU]; };
    int groupsOnLine = 0;
    std::size_t i = 0;
    for (; i + 3 <= bytes.size(); i += 3) {
        const unsigned int group =
            static_cast<unsigned int>(bytes[i] << 16 | bytes[i + 1] << 8 | bytes[i + 2]);
        digit(group >> 18);
        digit(group >> 12);
        digit(group >> 6);
        digit(group);
        if (++groupsOnLine == GroupsPerLine) {
            out += LineBreak;
            groupsOnLine = 0;
        }
    }
    if (bytes.size() - i == 1) {
        digit(static_cast<unsigned int>(bytes[i] >> 2));
        digit(static_cast<unsigned int>(bytes[i] << 4));
        out.append(2, PaddingMark);
    } else if (bytes.size() - i == 2) {
        const unsigned int group = static_cast<unsigned int>(bytes[i] << 8 | bytes[i + 1]);
        digit(group >> 10);
        digit(group >> 4);
        digit(group << 2);
        out += PaddingMark;
    }
}

void DecodeBase64(WideView text, CComVariant& value) {
    const std::vector<BYTE> bytes = Decode(text);
    value.SetBytes(bytes.data(), static_cast<ULONG>(bytes.size()), 0);
}

}  // namespace quillet
