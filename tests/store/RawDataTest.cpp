#include "lum/core/store/RawData.h"

#include <gtest/gtest.h>

#include <bit>
#include <limits>
#include <memory>
#include <numeric>
#include <utility>
#include <vector>

#include "core/main/store/TemporaryRawDataAccess.h"
#include "lum/core/store/ArrayFactory.h"
#include "lum/core/store/ITypedArray.h"
#include "lum/core/store/RawDataView.h"
#include "lum/core/store/StoreValue.h"
#include "lum/core/types/ScalarTypes.h"
#include "lum/core/utility/LumTuple.h"
#include "tests/support/LumErrorMatchers.h"

#if defined(__SANITIZE_ADDRESS__)
#define LUM_TEST_ADDRESS_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define LUM_TEST_ADDRESS_SANITIZER 1
#endif
#endif

namespace lum::core {
namespace {

constexpr lumsize_t kMax = std::numeric_limits<lumsize_t>::max();
constexpr uint64 kMax64 = std::numeric_limits<uint64>::max();

// The conditions that bound failures report.
constexpr char kSpan[] =
    "((std::numeric_limits<lumsize_t>::max() - startIndex >= length) && "
    "(m_data.GetSize() >= (startIndex + length)))";
constexpr char kElement[] = "(index < m_length && m_startIndex + index < m_data.GetSize())";
constexpr char kWidth[] = "(sizeof(T) == m_typeSize)";
constexpr char kSlice[] = "(ptr + count <= ptrEnd)";

VectorRawData<unsigned> MakeIota(lumsize_t count) {
    std::vector<unsigned> elements(count);
    std::iota(elements.begin(), elements.end(), 0u);
    return VectorRawData<unsigned>(std::move(elements));
}

TEST(ArrayViewTest, ChecksItsBounds) {
    std::vector<int> elements{1, 2, 3};
    const ArrayView<const int> view = elements;
    EXPECT_EQ(view[2], 3);
    EXPECT_LUM_REPORT(OutOfBounds, "", "(index < m_size)", view[3]);
    EXPECT_EQ(view.GetSlice(1, 2).GetData(), &elements[1]);
    EXPECT_TRUE(view.GetSlice(3, 0).IsEmpty());
    EXPECT_TRUE(ArrayView<int>().GetSlice(0, 0).IsEmpty());

    EXPECT_LUM_REPORT(OutOfBounds, "", kSlice, view.GetSlice(0, 4));
    EXPECT_LUM_REPORT(OutOfBounds, "", kSlice, view.GetSlice(2, 2));
    EXPECT_LUM_REPORT(OutOfBounds, "", kSlice, view.GetSlice(4, 0));
    EXPECT_LUM_REPORT(OutOfBounds, "", kSlice, view.GetSlice(1, kMax64));
    EXPECT_LUM_REPORT(OutOfBounds, "",
                      "((std::numeric_limits<uint64_t>::max()) - index > (size_t)m_ptr)",
                      view.GetSlice(kMax64, 2));
    EXPECT_LUM_REPORT(OutOfBounds, "",
                      "((std::numeric_limits<uint64_t>::max()) - m_size > (size_t)m_ptr)",
                      ArrayView<int>(elements.data(), kMax64).GetSlice(0, 1));
}

TEST(RawDataTest, OwnsAVectorWithoutCopyingIt) {
    std::vector<unsigned long long> elements{1, 2, 3};
    const unsigned long long* const address = elements.data();
    const auto data = VectorRawData<unsigned long long>::Make(std::move(elements));
    EXPECT_EQ(data->GetView().GetData(), address);
    EXPECT_EQ(data->GetSize(), 3u);
    EXPECT_EQ(data->GetTypeSize(), 8u);
    EXPECT_EQ(data->GetByteView().GetSize(), 3u);  // Elements, although they are seen as bytes.

    VectorRawData<unsigned> source(2, 5);
    const VectorRawData<unsigned> target(std::move(source));
    EXPECT_EQ(target.GetView()[1], 5u);
    EXPECT_EQ(source.GetSize(), 0u);  // NOLINT(bugprone-use-after-move): the count goes along.
}

TEST(RawDataTest, CountsBeyond32BitsFail) {
    const ArrayView<const unsigned char> tooLong(nullptr, uint64{kMax} + 1);
    EXPECT_THROW(UnmanagedRawData<unsigned char>(nullptr, tooLong), LumRuntimeException);
}

TEST(RawDataTest, NumbersShareStorageByWidthAlone) {
    VectorRawData<unsigned> data(2, std::bit_cast<unsigned>(1.5f));
    EXPECT_EQ(data.ViewAs<float>()[1], 1.5f);
    data.ViewAs<int>()[0] = -1;
    EXPECT_EQ(data.GetView()[0], kMax);
    EXPECT_LUM_REPORT(IllegalCast, "", kWidth, data.ViewAs<double>());
    EXPECT_LUM_REPORT(IllegalCast, "", kWidth, std::as_const(data).ViewAs<unsigned char>());
}

TEST(RawDataTest, HandlesOfOneWidthAreNotOneType) {
    VectorRawData<RIndirectString> strings(1, RIndirectString(L"a"));
    VectorRawData<ValueCompositeArrayRange<unsigned long long>> runs({{1, SpecialKind::Null, 2}});
    ASSERT_EQ(strings.GetTypeSize(), sizeof(LumTuple));
    ASSERT_EQ(runs.GetTypeSize(), sizeof(SV));
    EXPECT_EQ(strings.ViewAs<RIndirectString>()[0], L"a");
    EXPECT_LUM_REPORT(IllegalCast, "", kWidth, strings.ViewAs<LumTuple>());
    EXPECT_LUM_REPORT(IllegalCast, "", kWidth, std::as_const(runs).ViewAs<SV>());
}

TEST(RawDataTest, UnmanagedMemoryIsReadOnlyAndKeptAlive) {
    struct SharedMemory : ISharedDataBuffer {
        std::vector<unsigned> elements{7, 8, 9};
    };
    auto memory = std::make_shared<SharedMemory>();
    const std::weak_ptr<SharedMemory> observer = memory;
    {
        UnmanagedRawData<unsigned> data(memory, ArrayView<const unsigned>(memory->elements));
        EXPECT_EQ(std::as_const(data).GetView().GetData(), memory->elements.data());
        memory.reset();
        EXPECT_EQ(std::as_const(data).GetView()[2], 9u);
        EXPECT_EQ(std::as_const(data).ViewAs<int>()[0], 7);
        EXPECT_LUM_REPORT(ImmutableValue, "", "", data.GetView());
        EXPECT_LUM_REPORT(ImmutableValue, "", "", data.GetByteView());
        EXPECT_LUM_REPORT(ImmutableValue, "", "", data.ViewAs<int>());
    }
    EXPECT_TRUE(observer.expired());
}

TEST(RawDataViewTest, SpansLieInsideTheBlock) {
    const VectorRawData<unsigned> data = MakeIota(10);
    const ConstRawDataView middle(data, 4, 2);
    const std::pair<ConstRawDataView, std::vector<unsigned>> inside[] = {
        {ConstRawDataView(data).GetSlice(8, 2), {8, 9}},
        {ConstRawDataView(data, 10, 0), {}},
        {middle.GetSlice(1, 5), {5, 6, 7, 8, 9}},  // Beyond its span, inside the block.
    };
    for (const auto& [made, expected] : inside) {
        const ConstRawDataView& view = made;
        ASSERT_EQ(view.GetSize(), expected.size());
        for (lumsize_t i = 0; i < view.GetSize(); ++i) {
            EXPECT_EQ(view.ViewAs<unsigned>()[i], expected[i]);
            EXPECT_EQ(view.GetValue(i).GetBytes(), reinterpret_cast<const unsigned char*>(
                                                       data.GetView().GetData() + expected[i]));
        }
        EXPECT_LUM_REPORT(OutOfBounds, "", kElement, view.GetValue(view.GetSize()));
    }
    EXPECT_LUM_REPORT(OutOfBounds, "", kSpan, ConstRawDataView(data, 1, 10));
    EXPECT_LUM_REPORT(OutOfBounds, "", kSpan, ConstRawDataView(data, kMax, 2));
    EXPECT_LUM_REPORT(OutOfBounds, "", kSpan, middle.GetSlice(1, 6));
    EXPECT_LUM_REPORT(OutOfBounds, "", kSpan, middle.GetSlice(kMax - 3, 1));
}

TEST(RawDataViewTest, WritesThroughAMutableSpan) {
    VectorRawData<unsigned> data = MakeIota(4);
    RawDataView view(data, 1, 2);
    *view.GetSlice(1, 1).GetValue(0).GetBytes() = 77;
    view.ViewAs<unsigned>()[0] = 66;
    ConstRawDataView read(data, 0, 1);
    read = view;
    EXPECT_EQ(read.ViewAs<unsigned>()[0], 66u);
    EXPECT_EQ(data.GetView()[2], 77u);
}

TEST(TemporaryRawDataTest, StartsWithDefaultElements) {
    using Access = detail::TemporaryRawDataAccess;
    const auto cells = TemporaryRawData::Make<SV>(3);
    EXPECT_EQ(Access::Get(cells).ViewAs<SV>()[2], nullptr);
    auto numbers = TemporaryRawData::Make<unsigned long long>(2);
    EXPECT_EQ(Access::Get(numbers).ViewAs<double>()[1], 0.0);
    numbers = TemporaryRawData::Make<SpecialKind>(1);
    EXPECT_EQ(Access::Get(numbers).GetSize(), 1u);
}

#ifdef LUM_TEST_ADDRESS_SANITIZER
// All other tests lean on this: what lies behind a column's storage cannot be written unnoticed.
TEST(RawDataDeathTest, AddressSanitizerSeesTheEndOfAColumn) {
    // A vector of exactly so many elements; one that has grown may have room for more.
    const SV column =
        factory::MakeArray(IntType::Get32(), std::vector<unsigned>(3), SortSpecOrder::UNKNOWN);
    const ArrayView<const unsigned> values = column->AsTypedArray<unsigned>().GetValues();
    EXPECT_DEATH(const_cast<unsigned*>(values.GetData())[values.GetSize()] = 4,
                 "AddressSanitizer: heap-buffer-overflow");
}
#endif

}  // namespace
}  // namespace lum::core
