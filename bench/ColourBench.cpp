#include <benchmark/benchmark.h>

#include <algorithm>
#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <random>
#include <string>
#include <vector>

#include "colours/ComponentColour.h"
#include "colours/DefaultColours.h"
#include "colours/DeviceRGB.h"
#include "utils/ParameterBlock.h"

// What painting, filling and storing colour schemes costs. The same scheme goes through session
// images, JSON text and CBOR; each way starts and ends at a whole scheme, native colours included.

namespace {

using nlohmann::json;
using Bytes = std::vector<std::uint8_t>;

CComponentsColors const& Designer() {
    static CComponentsColors scheme;
    if (scheme.Entries().empty()) AppCreateDefaultColoursDesigner(&scheme);
    return scheme;
}

/// Every code of the palette in an order that no cache can guess.
std::vector<CComponentCode> ShuffledCodes() {
    std::vector<CComponentCode> codes;
    for (auto const& entry : Designer().Entries()) codes.push_back(entry.pColour->m_code);
    std::ranges::shuffle(codes, std::mt19937(1));
    return codes;
}

void FillPalette(benchmark::State& state) {
    CComponentsColors scheme;
    for (auto _ : state) AppCreateDefaultColoursDesigner(&scheme);
    state.SetItemsProcessed(state.iterations() * static_cast<long>(scheme.Entries().size()));
}

void Find(benchmark::State& state) {
    const auto codes = ShuffledCodes();
    CComponentsColors const& scheme = Designer();
    for (auto _ : state) {
        for (CComponentCode code : codes) benchmark::DoNotOptimize(scheme.Find(code));
    }
    state.SetItemsProcessed(state.iterations() * static_cast<long>(codes.size()));
}

void FindNSColor(benchmark::State& state) {
    const auto codes = ShuffledCodes();
    CComponentsColors const& scheme = Designer();
    for (auto _ : state) {
        for (CComponentCode code : codes) benchmark::DoNotOptimize(scheme.FindNSColor(code));
    }
    state.SetItemsProcessed(state.iterations() * static_cast<long>(codes.size()));
}

void FindInStdMap(benchmark::State& state) {
    std::map<long long, CComponentColour*, std::greater<>> colours;
    for (auto const& entry : Designer().Entries()) colours[entry.lCode] = entry.pColour.get();
    const auto codes = ShuffledCodes();
    for (auto _ : state) {
        for (CComponentCode code : codes) benchmark::DoNotOptimize(colours.find(code.Packed()));
    }
    state.SetItemsProcessed(state.iterations() * static_cast<long>(codes.size()));
}

Bytes ToSession(CComponentsColors const& scheme) {
    CParameterBlock block;
    scheme.Save(&block);
    CFMutableDataRef data = CFDataCreateMutable(kCFAllocatorDefault, 0);
    const unsigned long size = block.SaveBinarySessionToMemory("CS", data);
    Bytes bytes(CFDataGetBytePtr(data), CFDataGetBytePtr(data) + size);
    CFRelease(data);
    return bytes;
}

void FromSession(Bytes const& bytes, CComponentsColors& scheme) {
    const std::vector<const char*> ids{"CS"};
    CParameterBlock block;
    block.LoadBinarySessionFromMemory(&ids, bytes.data(), static_cast<unsigned int>(bytes.size()));
    scheme.Load(&block, CDeviceRGB());
}

json ColourToJson(CComponentColour const& colour) {
    json row{{"Code", {{"Mod", colour.m_code.m_nModule}, {"CompID", colour.m_code.m_nCompID}}},
             {"Cl", colour.m_nClass},
             {"Name", colour.m_name}};
    if (auto const* fill = dynamic_cast<CGradientFill const*>(&colour)) {
        row["Type"] = 2;
        json& stops = row["GradColor"] = json::array();
        for (CGradComponent const* stop : fill->m_components) {
            stops.push_back({{"Position", stop->m_fPosition}, {"Color", ColourToJson(*stop)}});
        }
        return row;
    }
    row["Type"] = 1;
    const char* channels[] = {"R", "G", "B", "A"};
    for (int index = 0; index < 4; ++index) row[channels[index]] = colour.m_rgba[index];
    return row;
}

json ToJson(CComponentsColors const& scheme) {
    json rows = json::array();
    for (auto const& entry : scheme.Entries()) rows.push_back(ColourToJson(*entry.pColour));
    return rows;
}

void FromJson(json const& rows, CComponentsColors& scheme) {
    const CDeviceRGB space;
    for (json const& row : rows) {
        const CComponentCode code(row["Code"]["Mod"].get<int>(), row["Code"]["CompID"].get<int>());
        const auto cls = row["Cl"].get<int>();
        const auto& name = row["Name"].get_ref<std::string const&>();
        if (row["Type"] == 1) {
            scheme.Add(new CComponentColour(code, cls, name.c_str(), row["R"], row["G"], row["B"],
                                            row["A"], space));
            continue;
        }
        auto fill = std::make_unique<CGradientFill>(code, cls, name.c_str());
        for (json const& stop : row["GradColor"]) {
            json const& color = stop["Color"];
            fill->AddColor(stop["Position"], color["R"], color["G"], color["B"], color["A"], space,
                           1.0);
        }
        fill->Create(space);
        scheme.Add(fill.release());
    }
}

Bytes ToJsonText(CComponentsColors const& scheme) {
    const std::string text = ToJson(scheme).dump();
    return {text.begin(), text.end()};
}

void FromJsonText(Bytes const& bytes, CComponentsColors& scheme) {
    FromJson(json::parse(bytes), scheme);
}

Bytes ToCbor(CComponentsColors const& scheme) {
    return json::to_cbor(ToJson(scheme));
}

void FromCbor(Bytes const& bytes, CComponentsColors& scheme) {
    FromJson(json::from_cbor(bytes), scheme);
}

void Save(benchmark::State& state, Bytes (*save)(CComponentsColors const&)) {
    CComponentsColors const& scheme = Designer();
    std::size_t size = 0;
    for (auto _ : state) {
        const Bytes bytes = save(scheme);
        size = bytes.size();
        benchmark::DoNotOptimize(bytes.data());
    }
    state.counters["image_bytes"] = static_cast<double>(size);
}

void Load(benchmark::State& state, Bytes (*save)(CComponentsColors const&),
          void (*load)(Bytes const&, CComponentsColors&)) {
    const Bytes bytes = save(Designer());
    for (auto _ : state) {
        CComponentsColors scheme;
        load(bytes, scheme);
        if (scheme.Entries().size() != Designer().Entries().size()) {
            state.SkipWithError("not everything was loaded");
            break;
        }
    }
}

BENCHMARK(FillPalette);
BENCHMARK(Find);
BENCHMARK(FindNSColor);
BENCHMARK(FindInStdMap);
BENCHMARK_CAPTURE(Save, session, ToSession);
BENCHMARK_CAPTURE(Save, json_text, ToJsonText);
BENCHMARK_CAPTURE(Save, cbor, ToCbor);
BENCHMARK_CAPTURE(Load, session, ToSession, FromSession);
BENCHMARK_CAPTURE(Load, json_text, ToJsonText, FromJsonText);
BENCHMARK_CAPTURE(Load, cbor, ToCbor, FromCbor);

}  // namespace

BENCHMARK_MAIN();
