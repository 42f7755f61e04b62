#include "core/main/utility/Parser.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "core/main/serialize/VtlScanner.h"
#include "lum/core/types/ScalarTypes.h"
#include "lum/core/types/StringType.h"
#include "lum/core/utility/RIndirectString.h"
#include "tests/support/LumErrorMatchers.h"

namespace lum::core {
namespace {

// The forms of a reader, each giving what it read as text, so that they share one table.
struct Reader {
    const char* name;
    std::function<std::string(VtlScanner&)> overScanner;
    std::function<std::string(const TStringCore&)> overText;
    std::function<std::string(const TStringCore&)> tryText;  // "none" where there is no value.
};

template <typename T>
std::string Show(const T& value) {
    if constexpr (std::is_same_v<T, bool>) {
        return value ? "true" : "false";
    } else if constexpr (std::is_floating_point_v<T>) {
        return TStringCore::number(value, 'g', std::numeric_limits<T>::max_digits10).toStdString();
    } else if constexpr (std::is_integral_v<T>) {
        return std::to_string(value);
    } else if constexpr (std::is_same_v<T, TStringCore>) {
        return value.toStdString();
    } else {
        return value.ToString().toStdString();
    }
}

template <typename T>
Reader MakeReader(const char* name, T (*overScanner)(VtlScanner&),
                  T (*overText)(const TStringCore&),
                  std::optional<T> (*tryText)(const TStringCore&)) {
    return {name, [=](VtlScanner& scanner) { return Show(overScanner(scanner)); },
            [=](const TStringCore& text) { return Show(overText(text)); },
            [=](const TStringCore& text) {
                const std::optional<T> value = tryText(text);
                return value ? Show(*value) : "none";
            }};
}

const Reader kBool = MakeReader<bool>("bool", ReadBool, ReadBool, TryReadBool);
const Reader kInt32 = MakeReader<int>("int32", ReadInt32, ReadInt32, TryReadInt32);
const Reader kInt64 = MakeReader<long long>("int64", ReadInt64, ReadInt64, TryReadInt64);
const Reader kReal32 = MakeReader<float>("real32", ReadReal32, ReadReal32, TryReadReal32);
const Reader kReal64 = MakeReader<double>("real64", ReadReal64, ReadReal64, TryReadReal64);
const Reader kString = MakeReader<TStringCore>("string", ReadString, ReadString, TryReadString);
const Reader kDateTime =
    MakeReader<LumDateTime>("date", ReadDateTime, ReadDateTime, TryReadDateTime);
const Reader kColor = MakeReader<LumColor>("color", ReadColor, ReadColor, TryReadColor);

std::string Describe(const Reader& reader, const TStringCore& text) {
    return std::string(reader.name) + " of " + text.toStdString();
}

// The try form logs nothing, whatever it answers.
std::string Try(const Reader& reader, const TStringCore& text) {
    const test::LogCapture capture;
    std::string result = reader.tryText(text);
    EXPECT_TRUE(capture.GetLines().empty()) << Describe(reader, text);
    return result;
}

struct GoodCase {
    const Reader& reader;
    const wchar_t* text;
    const char* expected;
};

TEST(ParserTest, LiteralsInEveryForm) {
    const GoodCase cases[] = {
        {kBool, L"true", "true"},
        {kBool, L" false\t\n", "false"},

        {kInt32, L"5", "5"},
        {kInt32, L"-5", "-5"},
        {kInt32, L"+5", "5"},
        {kInt32, L"- 5", "-5"},
        {kInt32, L"-0", "0"},
        {kInt32, L"-2147483648", "-2147483648"},
        {kInt32, L"99999999999", "1215752191"},  // The low 32 bits.
        {kInt32, L"-99999999999", "-1215752191"},
        {kInt32, L"4294967296", "0"},
        {kInt32, L"2147483648", "-2147483648"},

        {kInt64, L"9223372036854775807", "9223372036854775807"},
        {kInt64, L"-9223372036854775807", "-9223372036854775807"},

        {kReal64, L"5", "5"},
        {kReal64, L"-1.5e3", "-1500"},
        {kReal64, L"+.5", "0.5"},
        {kReal64, L"-0", "-0"},
        {kReal64, L"-0.0", "-0"},
        {kReal64, L"0.1", "0.10000000000000001"},
        {kReal64, L"9223372036854775807", "9.2233720368547758e+18"},
        {kReal64, L"+inf", "inf"},
        {kReal64, L"-inf", "-inf"},
        {kReal64, L"nan", "nan"},
        {kReal64, L"-1e999", "-inf"},
        {kReal32, L"0.1", "0.100000001"},
        {kReal32, L"-3", "-3"},
        {kReal32, L"1e300", "inf"},
        {kReal32, L"1e-300", "0"},
        {kReal32, L"-inf", "-inf"},
    };
    for (const auto& [reader, text, expected] : cases) {
        const std::string what = Describe(reader, text);
        VtlScanner scanner(text);
        EXPECT_EQ(reader.overScanner(scanner), expected) << what;
        EXPECT_EQ(reader.overText(text), expected) << what;
        EXPECT_EQ(Try(reader, text), expected) << what;
    }
}

struct BadCase {
    const Reader& reader;
    LumError error;
    std::vector<const wchar_t*> texts;
};

TEST(ParserTest, TextsThatAreNoLiteral) {
    const BadCase cases[] = {
        {kBool,
         LumError::CannotParseBool,
         {L"", L"True", L"1", L"+true", L"'true'", L"true false"}},
        {kInt32,
         LumError::CannotParseInt32,
         {L"", L"-", L"+-5", L"--5", L"a", L"1x", L"1 2", L"1.0", L"1.", L"1e5", L"'5'", L"5;",
          L"9223372036854775808", L"Null", L"\n 5", L"5 //five"}},
        {kInt64, LumError::CannotParseInt64, {L"", L"-9223372036854775808", L"1-", L"0x1"}},
        {kReal32, LumError::CannotParseReal32, {L"", L".", L"1e", L"1,5", L"infinity", L"- -1"}},
        {kReal64,
         LumError::CannotParseReal64,
         {L"", L"-", L".", L"1e", L"1e+", L"1.5.", L"Inf", L"NaN", L"inf inf",
          L"9223372036854775808"}},
    };
    for (const BadCase& test : cases) {
        for (const wchar_t* const text : test.texts) {
            EXPECT_TRUE(test::FailsAs({test.error, "", true}, [&] { test.reader.overText(text); }))
                << Describe(test.reader, text);
            EXPECT_EQ(Try(test.reader, text), "none") << Describe(test.reader, text);
        }
    }
}

// A running scanner is left behind the literal.
TEST(ParserTest, LiteralsInARow) {
    VtlScanner scanner(L"true -5x +6 .5 -1 'it\\'s' '2024-03-01' 'fF' 7");
    EXPECT_EQ(ReadBool(scanner), true);
    EXPECT_EQ(ReadInt32(scanner), -5);
    EXPECT_EQ(scanner.Next().GetText(), TStringCore(L"x"));
    EXPECT_EQ(ReadInt64(scanner), 6);
    EXPECT_EQ(ReadReal32(scanner), 0.5f);
    EXPECT_EQ(ReadReal64(scanner), -1.0);
    EXPECT_EQ(ReadString(scanner), TStringCore(L"it's"));
    EXPECT_EQ(ReadDateTime(scanner), LumDateTime(2024, 3, 1, 0, 0, 0, 0));
    EXPECT_EQ(ReadColor(scanner).AsInt32(), 0xff);
    EXPECT_EQ(ReadInt32(scanner), 7);
    EXPECT_LUM_REPORT(CannotParseInt32, "", "", ReadInt32(scanner));

    // Over a scanner texts are quoted.
    for (const wchar_t* const bare : {L"abc", L"2024", L"ff", L""}) {
        VtlScanner words{TStringCore(bare)};
        EXPECT_LUM_REPORT(CannotParseString, "", "", ReadString(words));
        EXPECT_LUM_REPORT(CannotParseDateTime, "", "", ReadDateTime(words));
        EXPECT_LUM_REPORT(UnexpectedToken, TStringCore(bare).toStdString(), "", ReadColor(words));
    }
}

// A whole text needs no quotes; as a string it keeps those that it has.
TEST(ParserTest, StringsAsTheyStand) {
    for (const wchar_t* const text : {L"", L"abc", L" a ", L"'a'", L"'", L"Null", L"a\nb"}) {
        EXPECT_EQ(ReadString(TStringCore(text)), TStringCore(text));
        EXPECT_EQ(TryReadString(text), TStringCore(text));
    }
}

TStringCore Quoted(const TStringCore& text) {
    return L"'" + text + L"'";
}

// The forms of a reader whose literal is quoted: bare and quoted texts, and the scanner.
template <typename Check>
void ForEachQuotedForm(const Reader& reader, const TStringCore& text, const Check& check) {
    check([&] { return reader.overText(text); });
    check([&] { return reader.overText(Quoted(text)); });
    check([&] {
        VtlScanner scanner(Quoted(text));
        return reader.overScanner(scanner);
    });
}

void ExpectQuotedLiterals(const std::vector<GoodCase>& cases) {
    for (const auto& [reader, text, expected] : cases) {
        const std::string what = Describe(reader, text);
        ForEachQuotedForm(reader, text, [&, expected = expected](const auto& read) {
            EXPECT_EQ(read(), expected) << what;
        });
        EXPECT_EQ(Try(reader, text), expected) << what;
        EXPECT_EQ(Try(reader, Quoted(text)), expected) << what;
    }
}

TEST(ParserTest, Dates) {
    ExpectQuotedLiterals({
        {kDateTime, L"2024-03-01", "2024-03-01"},
        {kDateTime, L"2024-3-1", "2024-03-01"},
        {kDateTime, L"0400-01-01", "0400-01-01"},
        {kDateTime, L"23829-12-31T23:59:59.9999", "23829-12-31T23:59:59.9999"},
        {kDateTime, L"2024-02-29", "2024-02-29"},
        {kDateTime, L"1500-02-29", "1500-02-29"},
        {kDateTime, L"1582-10-04", "1582-10-04"},
        {kDateTime, L"1582-10-15", "1582-10-15"},
        {kDateTime, L"1582-10-31T01:02:03", "1582-10-31T01:02:03"},
        {kDateTime, L"2024-12-31T09:05:00", "2024-12-31T09:05:00"},
        {kDateTime, L"2024-03-01T9:5:0", "2024-03-01T09:05:00"},
        {kDateTime, L"2024-03-01T09:05:00.2500", "2024-03-01T09:05:00.2500"},
        {kDateTime, L"2024-03-01T00:00:00.0001", "2024-03-01T00:00:00.0001"},
        {kDateTime, L"2024-03-01T00:00:00.0000", "2024-03-01"},
    });
    const struct {
        LumError error;
        std::string details;
        const wchar_t* before;
        std::vector<const wchar_t*> texts;
    } bad[] = {
        {LumError::CannotParseDateTime,
         "",
         L"",
         {L"", L"2024", L"2024-03", L"2024-03-", L"-2024-03-01", L"2024-03-01-", L"2024/03/01",
          L" 2024-03-01", L"2024-03-01 ", L"2024-03-+1", L"4294969320-03-01", L"\u0662024-03-01"}},
        {LumError::CannotParseDateTime,
         "",
         L"2024-03-01",
         {L"T", L"T09", L"T09:05", L"T09:05:", L"T09:05:00:00", L"t09:05:00", L".2500",
          L"T09:05.2500", L"T09:05:00.", L"T09:05:00.250", L"T09:05:00.25000", L"T09:05:00.25.0",
          L"T09:05:00.+250"}},
        {LumError::YearOutOfRange,
         "Value '399' must be between 400 and 23829",
         L"",
         {L"399-12-31"}},
        {LumError::MonthOutOfRange, "Value '13' must be between 1 and 12", L"2024-", {L"13-01"}},
        {LumError::DayOutOfRange, "Value '0' must be between 1 and 31", L"2024-12-", {L"00"}},
        {LumError::HourOutOfRange,
         "Value '24' must be between 0 and 23",
         L"2024-12-01",
         {L"T24:00:00"}},
        {LumError::InvalidDateTime,
         "",
         L"",
         {L"2023-02-29", L"2024-02-30", L"1700-02-29", L"1582-10-05", L"1582-10-14",
          L"2024-04-31"}},
    };
    for (const auto& [error, details, before, texts] : bad) {
        // The conditions of the fields are the constructor's, and tested with it.
        const bool isReader = error == LumError::CannotParseDateTime;
        for (const wchar_t* const behind : texts) {
            const TStringCore text = TStringCore(before) + behind;
            ForEachQuotedForm(
                kDateTime, text, [&, error = error, details = details](const auto& read) {
                    EXPECT_TRUE(test::FailsAs({error, details, isReader}, read)) << text;
                });
            EXPECT_EQ(Try(kDateTime, text), "none") << text;
        }
    }
    // Text that begins with a quote and is no literal.
    for (const wchar_t* const text : {L"'2024-03-01", L"'2024-03-01' x", L"'2024-03-01\\'"}) {
        EXPECT_LUM_REPORT(CannotParseDateTime, "", "", ReadDateTime(TStringCore(text)));
        EXPECT_EQ(Try(kDateTime, text), "none") << TStringCore(text);
    }
}

// Every day reads back from its own text, in all forms, near the gap and the ends of the range.
TEST(ParserTest, DatesReadBack) {
    const LumDateTime starts[] = {LumDateTime::DateTimeMinimum, LumDateTime(1582, 1, 1, 0, 0, 0, 0),
                                  LumDateTime(2023, 12, 1, 13, 14, 15, 16),
                                  LumDateTime(23828, 12, 30, 0, 0, 0, 1)};
    for (const LumDateTime start : starts) {
        for (unsigned int day = 0; day < 366; ++day) {
            const auto date =
                LumDateTime::FromValue(start.GetValue() + day * LumDateTime::kTicksPerDay);
            ASSERT_EQ(ReadDateTime(date.ToString()), date) << date.ToString();
            ASSERT_EQ(TryReadDateTime(date.ToString()), date) << date.ToString();
        }
    }
}

TEST(ParserTest, Colors) {
    ExpectQuotedLiterals({
        {kColor, L"ff0000", "00ff0000"},
        {kColor, L"FFff0000", "ffff0000"},
        {kColor, L"0", "00000000"},
        {kColor, L"9aAfF", "0009aaff"},
        {kColor, L"ffffffff", "ffffffff"},
    });
    const BadCase bad[] = {
        {kColor, LumError::EmptyHexString, {L""}},
        {kColor, LumError::LongHexString, {L"000000000", L"xxxxxxxxx"}},
        {kColor,
         LumError::InvalidHexCharacter,
         {L"g", L"/", L":", L"@", L"`", L"G", L"-1", L" ff", L"0x1", L"ff ", L"\uff11", L"\u0141"}},
    };
    for (const BadCase& test : bad) {
        for (const wchar_t* const text : test.texts) {
            ForEachQuotedForm(kColor, text, [&](const auto& read) {
                EXPECT_TRUE(test::FailsAs({test.error, "", true}, read)) << TStringCore(text);
            });
            EXPECT_EQ(Try(kColor, text), "none") << TStringCore(text);
        }
    }
    EXPECT_LUM_REPORT(UnexpectedToken, "'ff' x", "", ReadColor(TStringCore(L"'ff' x")));
    EXPECT_EQ(Try(kColor, L"'ff' x"), "none");
}

// The same bits in each form; nothing where `text` is no literal of the type.
template <typename T>
void ExpectBits(const Type* type, const wchar_t* text, const T& expected) {
    EXPECT_EQ(ReadStorage<T>(type, TStringCore(text)), expected) << TStringCore(text);
    EXPECT_EQ(TryReadStorage<T>(type, TStringCore(text)), expected) << TStringCore(text);
    VtlScanner scanner{TStringCore(text)};
    EXPECT_EQ(ReadStorage<T>(type, scanner), expected) << TStringCore(text);
}

TEST(ParserTest, TypedReadersGiveTheStoredBits) {
    ExpectBits<unsigned char>(BoolType::Get(), L"true", 1);
    ExpectBits<unsigned char>(BoolType::Get(), L"false", 0);
    ExpectBits<unsigned int>(IntType::Get32(), L"-1", 0xFFFFFFFFu);
    ExpectBits<unsigned int>(RealType::Get32(), L"-1", 0xBF800000u);
    ExpectBits<unsigned int>(RealType::Get32(5, 2), L"1", 0x3F800000u);
    ExpectBits<unsigned int>(ColorType::Get(), L"'80000000'", 0x80000000u);
    ExpectBits<unsigned long long>(IntType::Get64(), L"-1", ~0ull);
    ExpectBits<unsigned long long>(RealType::Get64(), L"-1", 0xBFF0000000000000ull);
    ExpectBits<unsigned long long>(DateType::Get(), L"'1900-01-01'", 2086577280000000ull);
    ExpectBits<unsigned long long>(DateTimeType::Get(), L"'1900-01-01T00:00:00.0001'",
                                   2086577280000001ull);
    VtlScanner scanner(L"'a'");
    EXPECT_EQ(ReadStorage<RIndirectString>(StringType::Get(), scanner), L"a");
    EXPECT_EQ(ReadStorage<RIndirectString>(StringType::Get(), L"'a'"), L"'a'");
    EXPECT_EQ(TryReadStorage<RIndirectString>(StringType::Get(), L"'a'"), RIndirectString(L"'a'"));

    EXPECT_LUM_REPORT(CannotParseInt32, "", "", ReadStorage<unsigned int>(IntType::Get32(), L"x"));
    EXPECT_EQ(TryReadStorage<unsigned int>(IntType::Get32(), L"x"), std::nullopt);
}

template <typename T>
void ExpectRefused(const std::vector<const Type*>& types, LumError error, const char* condition) {
    const test::ExpectedFailure failure{error, "", true, condition};
    for (const Type* const type : types) {
        for (const wchar_t* const text : {L"1", L"true", L"'1'"}) {
            VtlScanner scanner{TStringCore(text)};
            EXPECT_TRUE(test::FailsAs(failure, [&] { ReadStorage<T>(type, scanner); }))
                << type->ToString();
            EXPECT_TRUE(test::FailsAs(failure, [&] { ReadStorage<T>(type, TStringCore(text)); }))
                << type->ToString();
            EXPECT_EQ(TryReadStorage<T>(type, text), std::nullopt) << type->ToString();
            EXPECT_FALSE(scanner.PeekIs(VtlTokenKind::End));
        }
    }
}

TEST(ParserTest, TypedReadersRefuseOtherStorage) {
    const std::vector<const Type*> narrow = {IntType::Get32(), RealType::Get32(), ColorType::Get()};
    const std::vector<const Type*> wide = {IntType::Get64(), RealType::Get64(), DateType::Get(),
                                           DateTimeType::Get()};
    const std::vector<const Type*> texts = {StringType::Get()};
    const std::vector<const Type*> bools = {BoolType::Get()};
    const auto allBut = [&](const std::vector<const Type*>& own) {
        std::vector<const Type*> others;
        for (const auto& types : {narrow, wide, texts, bools}) {
            if (types != own) {
                others.insert(others.end(), types.begin(), types.end());
            }
        }
        return others;
    };
    ExpectRefused<RIndirectString>(allBut(texts), LumError::ExpectedString,
                                   "(type->GetStoreType() == StoreType::String)");
    ExpectRefused<unsigned char>(allBut(bools), LumError::ExpectedBool,
                                 "(type->GetStoreType() == StoreType::Bool)");
    ExpectRefused<unsigned int>(allBut(narrow), LumError::TypeMismatchExpected, "");
    ExpectRefused<unsigned long long>(allBut(wide), LumError::TypeMismatchExpected, "");
}

TEST(ParserTest, HexBytes) {
    EXPECT_EQ(ReadHexBytes(L""), std::vector<unsigned char>());
    EXPECT_EQ(ReadHexBytes(L"00fFA5"), (std::vector<unsigned char>{0x00, 0xFF, 0xA5}));
    EXPECT_LUM_REPORT(OddHexString, "", "(s.length() % 2 == 0)", ReadHexBytes(L"abc"));
    EXPECT_LUM_REPORT(OddHexString, "", "(s.length() % 2 == 0)", ReadHexBytes(L"xyz"));
    for (const wchar_t* const text : {L"0g", L"g0", L"00 0", L"+1", L"0x", L"00\u01610"}) {
        EXPECT_LUM_REPORT(InvalidHexCharacter, "", "(isOk)", ReadHexBytes(text));
    }
}

}  // namespace
}  // namespace lum::core
