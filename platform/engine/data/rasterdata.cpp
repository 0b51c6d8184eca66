#include "Velmar/Lattix/RasterData.h"

#include "QuarnLog/Exception.h"
#include "core/textutil.h"
#include "data/datautil.h"

namespace Velmar::Lattix {

namespace {
constexpr std::wstring_view bandsMarker = L";bands=";
}

struct rasterDataRecord {
    std::wstring path;
    std::vector<int> bands;
};

RasterData::RasterData() : rasterData(std::make_shared<rasterDataRecord>()) {}
RasterData::RasterData(std::wstring path, std::vector<int> bands)
    : rasterData(std::make_shared<rasterDataRecord>()) {
    SetPath(path);
    SetBands(bands);
}
ObjectName RasterData::DefaultTypeName() {
    static const ObjectName name(L"TAMARIN", L"Raster");
    return name;
}
std::wstring RasterData::GetPath() const {
    return rasterData->path;
}
void RasterData::SetPath(const std::wstring& path) {
    if (path.find_first_of(std::wstring(L"\n\r\0", 3)) != std::wstring::npos)
        QUARN_THROW(L"A raster path cannot hold line breaks or NUL characters: " +
                    detail::Quote(path));
    rasterData->path = path;
}
std::vector<int> RasterData::GetBands() const {
    return rasterData->bands;
}
void RasterData::SetBands(const std::vector<int>& bands) {
    for (int band : bands)
        if (band < 1)
            QUARN_THROW("Raster bands count from 1; band " + std::to_string(band) + " is invalid.");
    rasterData->bands = bands;
}
ObjectName RasterData::GetDataTypeName() const {
    return DefaultTypeName();
}

std::wstring RasterData::ToString() const {
    std::wstring text = rasterData->path;
    if (!rasterData->bands.empty()) {
        text += bandsMarker;
        for (std::size_t i = 0; i < rasterData->bands.size(); ++i) {
            if (i) text += L",";
            text += std::to_wstring(rasterData->bands[i]);
        }
    }
    return text;
}

void RasterData::FromString(const std::wstring& text) {
    auto marker = text.rfind(bandsMarker);
    std::wstring path = marker == std::wstring::npos ? text : text.substr(0, marker);
    std::vector<int> bands;
    if (marker != std::wstring::npos) {
        auto list = text.substr(marker + bandsMarker.size());
        for (const auto& piece : detail::SplitTrimmed(list, L',')) {
            long long band = 0;
            if (!detail::ReadInt64(piece, band) || band < 1 || band > 1000000)
                detail::RaiseReadError(__PRETTY_FUNCTION__, DefaultTypeName(), text,
                                       L"band numbers of 1 or more after \";bands=\"");
            bands.push_back(static_cast<int>(band));
        }
    }
    if (path.find_first_of(std::wstring(L"\n\r\0", 3)) != std::wstring::npos)
        detail::RaiseReadError(__PRETTY_FUNCTION__, DefaultTypeName(), text,
                               L"a path without line breaks or NUL characters");
    rasterData->path = path;
    rasterData->bands = std::move(bands);
}

JsonValue RasterData::ToJson() const {
    nlohmann::json json = nlohmann::json::object();
    json["path"] = detail::ToUtf8(rasterData->path);
    json["bands"] = rasterData->bands;
    return JsonValue(std::move(json));
}

void RasterData::FromJson(const JsonValue& value) {
    const auto& json = value.GetJson();
    const wchar_t* expected = L"{\"path\": text, \"bands\": [numbers of 1 or more]}";
    if (!json.is_object() || !json.contains("path") || !json["path"].is_string())
        detail::RaiseJsonError(__PRETTY_FUNCTION__, DefaultTypeName(), value, expected);
    std::vector<int> bands;
    if (json.contains("bands")) {
        if (!json["bands"].is_array())
            detail::RaiseJsonError(__PRETTY_FUNCTION__, DefaultTypeName(), value, expected);
        for (const auto& band : json["bands"]) {
            if (!band.is_number_integer() || band.get<long long>() < 1 ||
                band.get<long long>() > 1000000)
                detail::RaiseJsonError(__PRETTY_FUNCTION__, DefaultTypeName(), value, expected);
            bands.push_back(band.get<int>());
        }
    }
    SetPath(detail::FromUtf8(json["path"].get<std::string>()));
    rasterData->bands = std::move(bands);
}

std::shared_ptr<Data> RasterData::Clone() const {
    return std::make_shared<RasterData>(rasterData->path, rasterData->bands);
}
void RasterData::Initialize() {
    rasterData->path.clear();
    rasterData->bands.clear();
}

}  // namespace Velmar::Lattix
