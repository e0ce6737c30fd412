#include "host/print/CatalogueJson.h"

#include "loader/DesignCatalogue.h"

namespace ZEMA {

namespace {

template <class Rows, class Write>
void WriteTable(JsonWriter& json, std::string_view key, const Rows& rows, Write write) {
    json.Key(key);
    json.BeginArray();
    for (const auto& row : rows) write(row);
    json.EndArray();
}

void WriteSubstitution(JsonWriter& json, const DesignSubstitution& row) {
    json.BeginArray();
    json.Number(row.oldDesign);
    json.Number(row.newDesign);
    json.EndArray();
}

void WriteSplit(JsonWriter& json, const DesignSplit& split) {
    json.Key("split");
    json.BeginObject();
    json.Number("combined", split.combined);
    json.Number("first", split.first);
    json.Number("second", split.second);
    json.EndObject();
}

void WriteCorrection(JsonWriter& json, const DesignCorrection& row) {
    json.BeginObject();
    json.Number("designID", row.design);
    json.Float("y", row.y);
    json.Float("z", row.z);
    json.Float("angle", row.angle);
    json.EndObject();
}

// A design either has a successor or is placed with an offset in documents below a version.
void WriteLegacyCorrection(JsonWriter& json, const LegacyCorrection& row) {
    json.BeginObject();
    json.Number("designID", row.design);
    if (row.successor != 0) {
        json.Number("successor", row.successor);
    } else {
        json.Text("offsetBelow", std::to_string(row.fixedInMajor) + "." + std::to_string(row.fixedInMinor) + ".0.0");
    }
    json.EndObject();
}

}  // namespace

void WriteCatalogue(JsonWriter& json) {
    json.BeginObject();
    WriteTable(json, "substitutions", DesignSubstitutions(), [&](const auto& row) { WriteSubstitution(json, row); });
    WriteSplit(json, CombinedDesign());
    WriteTable(json, "firstCorrections", FirstCorrections(), [&](std::uint32_t design) { json.Number(design); });
    WriteTable(json, "secondCorrections", SecondCorrections(), [&](const auto& row) { WriteCorrection(json, row); });
    WriteTable(json, "legacyCorrections", LegacyCorrections(),
               [&](const auto& row) { WriteLegacyCorrection(json, row); });
    json.EndObject();
}

}  // namespace ZEMA
