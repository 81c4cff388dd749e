// Values and texts out of memory: none becomes empty silently.
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <unordered_set>

#include "Quillet/values/Base64.h"
#include "support/OutOfMemory.h"
#include "support/TestHelpers.h"

namespace {

using quillet::CComVariant;
using quillet::CString;
using quillet::test::Attempt;
using quillet::test::ByteArray;
using quillet::test::ContentOf;
using quillet::test::DateVariant;
using quillet::test::ExpectWholeOrNotAtAll;
using quillet::test::Failing;
using quillet::test::SweepAttempts;
using quillet::test::TextOf;
using quillet::test::Try;

const CString LongText("a text that is too long to stand in the string itself, \xC3\xA4\xC3\xB6\xC3\xBC");

std::string Shown(const CComVariant& value) {
    const std::string type = std::to_string(value.vt) + ": ";
    switch (value.vt) {
        case VT_BSTR:
            return type + TextOf(value);
        case VT_ARRAY | VT_UI1:
            return type + testing::PrintToString(ContentOf(value));
        case VT_R8:
            return type + std::to_string(value.dblVal);
        case VT_I4:
            return type + std::to_string(value.lVal);
        default:
            return type;
    }
}

struct VariantStep {
    const char* m_name;
    CComVariant m_before;
    std::function<void(CComVariant&)> m_change;
};

void PrintTo(const VariantStep& step, std::ostream* out) {
    *out << step.m_name;
}

class VariantOutOfMemory : public testing::TestWithParam<VariantStep> {};

TEST_P(VariantOutOfMemory, KeepsTheOldValueAndThrows) {
    ExpectWholeOrNotAtAll([] { return std::make_unique<CComVariant>(GetParam().m_before); },
                          GetParam().m_change, Shown);
}

CComVariant ReferenceTo(CComVariant& value) {
    CComVariant reference;
    reference.vt = VT_BYREF | VT_VARIANT;
    reference.pvarVal = &value;
    return reference;
}

INSTANTIATE_TEST_SUITE_P(
    Steps, VariantOutOfMemory,
    testing::Values(
        VariantStep{"SetText", CComVariant("old"),
                    [](CComVariant& value) { value.SetText(LongText.View()); }},
        VariantStep{"SetTextOfNothing", CComVariant("old"), [](CComVariant& value) { value.SetText({}); }},
        VariantStep{"SetBytes", CComVariant(1.5),
                    [](CComVariant& value) { value.SetBytes(reinterpret_cast<const BYTE*>("bytes"), 5, 1); }},
        VariantStep{"CopyOfText", CComVariant(7), [](CComVariant& value) { value = CComVariant(LongText); }},
        VariantStep{"CopyOfBytes", CComVariant("old"), [](CComVariant& value) { value = ByteArray("new"); }},
        VariantStep{"TextToBytes", CComVariant(LongText),
                    [](CComVariant& value) { value.ChangeType(VT_ARRAY | VT_UI1); }},
        VariantStep{"BytesToText", ByteArray("abcd"), [](CComVariant& value) { value.ChangeType(VT_BSTR); }},
        VariantStep{"NumberToText", CComVariant(1.5), [](CComVariant& value) { value.ChangeType(VT_BSTR); }},
        VariantStep{"DateToText", DateVariant(40000.5),
                    [](CComVariant& value) { value.ChangeType(VT_BSTR); }},
        VariantStep{"BooleanToText", CComVariant(true),
                    [](CComVariant& value) { value.ChangeType(VT_BSTR); }},
        VariantStep{"Dereferenced", CComVariant(2),
                    [](CComVariant& value) {
                        CComVariant text(LongText);
                        value = quillet::Dereferenced(ReferenceTo(text));
                    }},
        VariantStep{"DereferencedText", CComVariant(2),
                    [](CComVariant& value) {
                        CComVariant text(LongText);
                        CComVariant reference;
                        reference.vt = VT_BYREF | VT_BSTR;
                        reference.pbstrVal = &text.bstrVal;
                        value = quillet::Dereferenced(reference);
                    }},
        VariantStep{"DecodedBase64", CComVariant("old"), [](CComVariant& value) {
                        quillet::DecodeBase64(CString("QUJDREVGRw==").View(), value);
                    }}));

// The results of platform functions out of memory.
TEST(PlatformOutOfMemory, Copies_SayIt_AndLeaveTheTargetAlone) {
    const CComVariant text(LongText);
    SweepAttempts([&](std::size_t failing, Failing which) {
        CComVariant target(5);
        HRESULT result = S_OK;
        const Attempt attempt = Try(failing, which, [&] {
            CComVariant made;
            result = VariantChangeType(&made, const_cast<CComVariant*>(&text), 0, VT_ARRAY | VT_UI1);
            if (SUCCEEDED(result)) {
                target = std::move(made);
            }
        });
        EXPECT_TRUE(attempt.m_isDone);
        EXPECT_EQ(result, attempt.m_ranOut ? E_OUTOFMEMORY : S_OK);
        EXPECT_EQ(target.vt, attempt.m_ranOut ? VT_I4 : VT_ARRAY | VT_UI1);
        return attempt;
    });
}

// Each case allocates in a different way.
TEST(CStringOutOfMemory, TextsAreWholeOrNotMade) {
    const auto make = [] { return std::make_unique<CString>("before"); };
    const auto show = [](const CString& text) { return text.ToUtf8(); };
    ExpectWholeOrNotAtAll(
        make, [](CString& text) { text = CString("a text of more than sixteen \xE2\x82\xAC"); }, show);
    ExpectWholeOrNotAtAll(
        make,
        [](CString& text) { text = CString::FromValidUtf8("a text that is made wide when it is seen"); },
        show);
    ExpectWholeOrNotAtAll(
        make, [](CString& text) { text += CString(" and this which has no room"); }, show);
    ExpectWholeOrNotAtAll(
        make, [](CString& text) { text.Format("%s, %.40f, %d", "a formatted text", 0.1, 5); }, show);
    ExpectWholeOrNotAtAll(
        make, [](CString& text) { text.Replace("e", "a longer text in its place "); }, show);
}

// A text that is still UTF-8 is converted to wide characters while it is hashed.
TEST(CStringOutOfMemory, HashingThrows_AndEndsNoProcess) {
    SweepAttempts([](std::size_t failing, Failing which) {
        const CString text = CString::FromValidUtf8("a text that nobody has looked at as wide characters");
        std::unordered_set<CString> texts;
        const Attempt attempt = Try(failing, which, [&] { texts.insert(text); });
        EXPECT_EQ(texts.count(text), attempt.m_isDone ? 1U : 0U);
        return attempt;
    });
}

}  // namespace
