#include "tools/BlockJson.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <limits>
#include <memory>
#include <nlohmann/json.hpp>
#include <ostream>
#include <stdexcept>

#include "platform/Utf8.h"
#include "tools/InputOutput.h"
#include "utils/ParameterTree.h"

namespace {

using nlohmann::json;
using nlohmann::ordered_json;

constexpr std::array<const char*, 10> typeNames{"",       "string", "int",  "double", "uint64",
                                                "fileId", "block",  "bool", "float",  "int64"};

// Deeper levels are not indented further: the output would grow with the square of the depth.
constexpr std::size_t deepestIndent = 40;

constexpr char hexDigits[] = "0123456789abcdef";

std::string ToHex(std::string const& bytes) {
    std::string hex;
    for (char c : bytes) {
        hex += hexDigits[static_cast<unsigned char>(c) >> 4];
        hex += hexDigits[static_cast<unsigned char>(c) & 15];
    }
    return hex;
}

unsigned HexDigit(char c) {
    const char* found = std::find(hexDigits, hexDigits + 16, c);
    if (found == hexDigits + 16) throw std::runtime_error("not a hexadecimal number");
    return static_cast<unsigned>(found - hexDigits);
}

std::string FromHex(std::string const& hex) {
    if (hex.size() % 2 != 0) throw std::runtime_error("an odd number of hexadecimal digits");
    std::string bytes;
    for (std::size_t i = 0; i < hex.size(); i += 2)
        bytes += static_cast<char>(HexDigit(hex[i]) << 4 | HexDigit(hex[i + 1]));
    return bytes;
}

// What the JSON library says of a member that is missing or of another type is for programmers.
json const& Member(json const& object, char const* name) {
    if (!object.is_object()) throw std::runtime_error("an object is missing");
    const auto found = object.find(name);
    if (found == object.end()) throw std::runtime_error(Quoted(name) + " is missing");
    return *found;
}

std::string Text(json const& value, char const* what) {
    if (!value.is_string()) throw std::runtime_error(Quoted(what) + " is no text");
    return value.get<std::string>();
}

std::string TextMember(json const& object, char const* name) {
    return Text(Member(object, name), name);
}

ordered_json TextToJson(std::string const& text) {
    if (IsUtf8(text)) return text;
    return {{"hex", ToHex(text)}};
}

std::string TextFromJson(json const& value, char const* what) {
    return value.is_object() ? FromHex(TextMember(value, "hex")) : Text(value, what);
}

template <typename Number>
using BitsOf = std::conditional_t<sizeof(Number) == 8, std::uint64_t, std::uint32_t>;

template <typename Number>
ordered_json RealToJson(Number number) {
    if (std::isfinite(number)) return number;
    if (std::isinf(number)) return number > 0 ? "inf" : "-inf";
    const auto bits = std::bit_cast<BitsOf<Number>>(number);
    if (bits == std::bit_cast<BitsOf<Number>>(std::numeric_limits<Number>::quiet_NaN()))
        return "nan";
    std::string hex;
    for (int shift = sizeof(Number) * 8 - 4; shift >= 0; shift -= 4)
        hex += hexDigits[bits >> shift & 15];
    return "nan:" + hex;
}

template <typename Number>
Number RealFromJson(json const& value) {
    if (value.is_number()) {
        const auto number = value.get<double>();
        if (std::abs(number) > std::numeric_limits<Number>::max())
            throw std::runtime_error("a number out of range: " + value.dump());
        return static_cast<Number>(number);
    }
    if (!value.is_string()) throw std::runtime_error("not a number");
    const auto text = value.get<std::string>();
    if (text == "inf") return std::numeric_limits<Number>::infinity();
    if (text == "-inf") return -std::numeric_limits<Number>::infinity();
    if (text == "nan") return std::numeric_limits<Number>::quiet_NaN();
    if (text.size() != 4 + sizeof(Number) * 2 || text.rfind("nan:", 0) != 0)
        throw std::runtime_error("not a number: " + Quoted(text));
    BitsOf<Number> bits = 0;
    for (char c : text.substr(4)) bits = static_cast<BitsOf<Number>>(bits << 4 | HexDigit(c));
    return std::bit_cast<Number>(bits);
}

template <typename Number>
Number IntegerFromJson(json const& value) {
    if (!value.is_number_integer()) throw std::runtime_error("not an integer");
    if (value.is_number_unsigned()) {
        const auto number = value.get<std::uint64_t>();
        if (number <= static_cast<std::uint64_t>(std::numeric_limits<Number>::max()))
            return static_cast<Number>(number);
    } else {
        const auto number = value.get<std::int64_t>();
        if (std::is_signed_v<Number> &&
            number >= static_cast<std::int64_t>(std::numeric_limits<Number>::min()))
            return static_cast<Number>(number);
    }
    throw std::runtime_error("a number out of range: " + value.dump());
}

ordered_json ValueToJson(CParameter const& parameter) {
    switch (parameter.type) {
        case tagString:
            return TextToJson(static_cast<CStringParameter const&>(parameter).value);
        case tagInt:
            return static_cast<CIntParameter const&>(parameter).value;
        case tagDouble:
            return RealToJson(static_cast<CDoubleParameter const&>(parameter).value);
        case tagUInt64:
            return static_cast<CUInt64Parameter const&>(parameter).value;
        case tagBool:
            return static_cast<CBoolParameter const&>(parameter).value;
        case tagFloat:
            return RealToJson(static_cast<CFloatParameter const&>(parameter).value);
        case tagSInt64:
            return static_cast<CSInt64Parameter const&>(parameter).value;
        case tagFileId: {
            auto const& id = static_cast<CFileIdTypeParameter const&>(parameter).value;
            return ordered_json::array({id.first, id.second});
        }
        default:
            return nullptr;
    }
}

std::unique_ptr<CParameter> ValueFromJson(std::string const& type, json const& value) {
    const auto make = [](auto made) -> std::unique_ptr<CParameter> { return made; };
    if (type == "string") {
        auto text = std::make_unique<CStringParameter>();
        text->value = TextFromJson(value, "value");
        return text;
    }
    if (type == "int")
        return make(std::make_unique<CIntParameter>("", IntegerFromJson<std::int32_t>(value)));
    if (type == "double")
        return make(std::make_unique<CDoubleParameter>("", RealFromJson<double>(value)));
    if (type == "uint64")
        return make(
            std::make_unique<CUInt64Parameter>("", IntegerFromJson<unsigned long long>(value)));
    if (type == "bool") {
        if (!value.is_boolean()) throw std::runtime_error("neither true nor false");
        return make(std::make_unique<CBoolParameter>("", value.get<bool>()));
    }
    if (type == "float")
        return make(std::make_unique<CFloatParameter>("", RealFromJson<float>(value)));
    if (type == "int64")
        return make(std::make_unique<CSInt64Parameter>("", IntegerFromJson<long long>(value)));
    if (type == "fileId") {
        if (!value.is_array() || value.size() != 2)
            throw std::runtime_error("not the two numbers of a file identity");
        const KEL::FileIdType id{IntegerFromJson<std::uint64_t>(value.at(0)),
                                 IntegerFromJson<std::uint64_t>(value.at(1))};
        return make(std::make_unique<CFileIdTypeParameter>("", id));
    }
    throw std::runtime_error("unknown type " + Quoted(type));
}

// Writes nested lists without recursion: the stack holds how far each open list has come.
class CJsonWriter {
public:
    explicit CJsonWriter(std::ostream& out) : m_out(out) {}

    void WriteParameters(CParameterBlock const& top) {
        Open(top);
        WriteOpen();
    }

    void WriteOne(CParameter const& parameter) {
        WriteEntry(&parameter);
        WriteOpen();
        if (parameter.type == tagBlock) m_out << '}';
    }

private:
    struct CList {
        CParameterBlock const* block;
        std::size_t next;
    };

    void WriteOpen() {
        while (!m_open.empty()) {
            CList& list = m_open.back();
            if (list.next == list.block->parameters.size()) {
                Close();
                continue;
            }
            if (list.next > 0) m_out << ',';
            CParameter const* const parameter = list.block->parameters[list.next++];
            NewLine();
            WriteEntry(parameter);
        }
    }

    void NewLine() {
        m_out << '\n' << std::string(2 * std::min(m_open.size(), deepestIndent), ' ');
    }

    void Open(CParameterBlock const& block) {
        m_out << "\"parameters\": [";
        m_open.push_back({&block, 0});
    }

    void Close() {
        const bool empty = m_open.back().block->parameters.empty();
        m_open.pop_back();
        if (!empty) NewLine();
        m_out << ']';
        if (!m_open.empty()) m_out << '}';
    }

    void WriteEntry(CParameter const* parameter) {
        if (parameter == nullptr || parameter->type >= typeNames.size()) {
            m_out << R"({"type": "unknown"})";
            return;
        }
        m_out << "{\"type\": \"" << typeNames[parameter->type]
              << "\", \"name\": " << TextToJson(parameter->name).dump() << ", ";
        if (parameter->type == tagBlock)
            Open(static_cast<CParameterBlock const&>(*parameter));
        else
            m_out << "\"value\": " << ValueToJson(*parameter).dump() << '}';
    }

    std::ostream& m_out;
    std::vector<CList> m_open;
};

// Builds nested blocks without recursion, for the same reason.
void ReadParameters(json const& list, CParameterBlock& top) {
    struct CList {
        json const* list;
        CParameterBlock* block;
        std::size_t next;
    };
    std::vector<CList> open{{&list, &top, 0}};
    while (!open.empty()) {
        CList& current = open.back();
        if (!current.list->is_array()) throw std::runtime_error("\"parameters\" is no array");
        if (current.next == current.list->size()) {
            open.pop_back();
            continue;
        }
        json const& entry = (*current.list)[current.next++];
        const std::string type = TextMember(entry, "type");
        if (type == "unknown") continue;
        std::unique_ptr<CParameter> made = type == "block"
                                               ? std::make_unique<CParameterBlock>()
                                               : ValueFromJson(type, Member(entry, "value"));
        made->name = TextFromJson(Member(entry, "name"), "name");
        current.block->parameters.push_back(made.get());
        CParameterBlock* const block = AsBlock(made.release());
        if (block != nullptr) open.push_back({&Member(entry, "parameters"), block, 0});
    }
}

}  // namespace

void WriteJson(std::ostream& out, CBlockDocument const& document) {
    if (document.fBare)
        out << "{\"format\": \"bare\", ";
    else
        out << "{\"format\": \"session\", \"id\": " << TextToJson(document.strId).dump()
            << ", \"name\": " << TextToJson(document.block.name).dump() << ", ";
    CJsonWriter(out).WriteParameters(document.block);
    out << "}\n";
}

void WriteJsonEntry(std::ostream& out, CParameter const& parameter) {
    CJsonWriter(out).WriteOne(parameter);
    out << '\n';
}

std::string ReadJson(std::string const& text, CBlockDocument& document) try {
    const json whole = json::parse(text);
    const std::string format = TextMember(whole, "format");
    if (format != "session" && format != "bare")
        return "\"format\" is neither \"session\" nor \"bare\"";
    document.fBare = format == "bare";
    if (!document.fBare) {
        document.strId = TextFromJson(Member(whole, "id"), "id");
        document.block.name = TextFromJson(Member(whole, "name"), "name");
        if (document.strId.find('\0') != std::string::npos)
            return "\"id\" holds a zero byte, which ends an identifier";
    }
    ReadParameters(Member(whole, "parameters"), document.block);
    return "";
} catch (json::parse_error const& error) {
    return "it is no JSON from byte " + std::to_string(error.byte) + " on";
} catch (std::runtime_error const& error) {
    return error.what();
}

std::unique_ptr<CParameter> ParameterFromText(std::string const& type, std::string const& text) {
    if (type == "string") return ValueFromJson(type, text);
    json value = json::parse(text, nullptr, false);
    return ValueFromJson(type, value.is_primitive() && !value.is_discarded() ? value : json(text));
}
