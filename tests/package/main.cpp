// Uses the installed library as a host would, and passes types and exceptions across its boundary
// in both directions. Prints nothing but what went wrong.

#include <lum/core/LumCore.h>

#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string>
#include <typeinfo>
#include <vector>

namespace {

using namespace lum::core;

int g_failures = 0;

void Expect(bool condition, const char* what) {
    if (!condition) {
        std::fprintf(stderr, "consumer: %s\n", what);
        ++g_failures;
    }
}

std::unique_ptr<IDataStore> MakeStore() {
    std::unique_ptr<IDataStore> store =
        factory::MakeDataStore(std::unique_ptr<std::unordered_map<RInternString, SV>>());
    store->AddValue(KeyPath::ParseString(L"sales/amount"),
                    factory::MakeArray<unsigned>(
                        IntType::Get32(),
                        std::make_unique<std::vector<unsigned>>(std::vector{3u, 0u, 5u}), nullptr,
                        std::make_unique<std::vector<SpecialKind>>(std::vector{
                            SpecialKind::Normal, SpecialKind::Null, SpecialKind::Normal}),
                        SortSpecOrder::UNKNOWN));
    return store;
}

void CheckJson() {
    const std::string json = SerializeDataStoreCompact(*MakeStore()).toStdString();
    Expect(json == R"({"sales:M{ amount:A<i> }":{"amount:A<i>":[3,[0,"Null"],5]}})", json.c_str());
    const auto again = StoreValueParser::MakeDataStore(TStringCore::fromUtf8(json));
    Expect(SerializeDataStoreCompact(*again).toStdString() == json, "the text does not read back");
    try {
        StoreValueParser::MakeDataStore(L"[");
        Expect(false, "a broken text did not throw");
    } catch (const LumRuntimeException& error) {
        Expect(error.GetError() == LumError::JsonParseFailure, error.what());
    }
    // The exceptions of the JSON parser come through as what a host can catch.
    try {
        StoreValueParser::MakeDataStore(L"{\"a:i\":\"x\"}");
        Expect(false, "a string as a number did not throw");
    } catch (const LumException& error) {
        Expect(false, error.what());
    } catch (const std::exception&) {
    }
}

// The interfaces' type information has to be one on both sides.
void CheckCasts() {
    const SV column = MakeStore()->GetValue(KeyPath::ParseString(L"sales/amount"));
    const StoreValue* const value = column.get();
    Expect(dynamic_cast<const ITypedArray<unsigned>*>(value) != nullptr,
           "a column is no typed array of its storage");
    Expect(dynamic_cast<const ITypedArray<unsigned char>*>(value) == nullptr,
           "a column is a typed array of another storage");
    Expect(dynamic_cast<const IStoreKeyMap*>(value) == nullptr, "a column is a key map");
    Expect(typeid(*column->GetType()) == typeid(ArrayType), "the type of a column is no ArrayType");
}

void CheckExceptions() {
    try {
        MakeStore()->GetValue(KeyPath::ParseString(L"sales/none"));
        Expect(false, "a missing key did not throw");
    } catch (const LumRuntimeException& error) {
        Expect(error.GetError() == LumError::KeyNotFound, error.what());
    } catch (...) {
        Expect(false, "a missing key threw something else than LumRuntimeException");
    }
    try {
        MakeStore()->AddValue(KeyPath(), factory::MakeInt32(1));
        Expect(false, "an empty path did not throw");
    } catch (const std::exception& error) {
        Expect(dynamic_cast<const LumException*>(&error) != nullptr, error.what());
    }
}

// What a host's function throws passes through the library unchanged.
void CheckHostException() {
    struct HostFailure : std::runtime_error {
        using std::runtime_error::runtime_error;
    };
    const auto former = SetLumLogger(std::make_shared<LumLogger>(
        LumLogger::WideSink(),
        [](LumLogLevel, const TStringCore&) { throw HostFailure("from the host"); },
        LumLogger::LevelFilter()));
    try {
        LumLog(LumLogLevel::Notice, TStringCore(L"text"));
        Expect(false, "the host's exception was lost");
    } catch (const HostFailure&) {
    }
    SetLumLogger(former);
}

// The exceptions of tasks and the state behind the inline parts of scopes are one on both sides.
void CheckWorkersAndScopes() {
    std::string heard;
    Metrics::SetSink(std::make_shared<const Metrics::Sink>(
        [&](const Metrics::ScopeRecord& record) { heard += record.name; }));
    { const Metrics::Scope scope = MetricsFilter::OpenScope(MetricsFilter::Bits::Functions, "on"); }
    Metrics::SetSink(nullptr);
    Expect(heard == "on", "a scope was not heard of");

    LumThreadPool::Initialize(2);
    std::vector<std::unique_ptr<LumThreadPool::TaskWorkerHandle>> workers;
    workers.push_back(LumThreadPool::ScheduleTaskWorker([] { throw 5; }));
    try {
        LumThreadPool::Wait(std::move(workers));
        Expect(false, "a worker's exception was lost");
    } catch (const int thrown) {
        Expect(thrown == 5, "a worker threw something else");
    }
    workers.clear();
    workers.emplace_back();
    try {
        LumThreadPool::Wait(std::move(workers));
        Expect(false, "a null handle did not throw");
    } catch (const lumsys::AsyncTask::InvalidFutureException&) {
    }
}

}  // namespace

int main() {
    RegisterDefaultCollatorPool();
    CheckJson();
    CheckCasts();
    CheckExceptions();
    CheckHostException();
    CheckWorkersAndScopes();
    return g_failures == 0 ? 0 : 1;
}
