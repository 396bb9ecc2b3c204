#include "tools/BlockByteMap.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <ostream>
#include <vector>

#include "tools/BlockText.h"
#include "tools/InputOutput.h"
#include "utils/ParameterBlockCodec.h"

namespace {

constexpr std::size_t bytesShown = 16;

class CByteMap {
public:
    CByteMap(std::ostream& out, std::string const& image) : m_out(out), m_image(image) {}

    bool WriteSession(std::string const& id) { return Header(id) && Name() && Entries(); }

    bool WriteBare() { return Entries(); }

    std::string const& Fault() const { return m_strFault; }

private:
    std::size_t Left() const { return m_image.size() - m_nAt; }

    unsigned char const* Here() const {
        return reinterpret_cast<unsigned char const*>(m_image.data()) + m_nAt;
    }

    // Prints a field and goes past it.
    void Field(std::size_t length, std::string const& meaning) {
        char text[16];
        std::snprintf(text, sizeof text, "%6zu  ", m_nAt);
        std::string line = text;
        for (std::size_t i = 0; i < std::min(length, bytesShown); ++i) {
            std::snprintf(text, sizeof text, "%02X ", Here()[i]);
            line += text;
        }
        if (length > bytesShown) line += "... ";
        constexpr std::size_t meaningColumn = 36;
        line.resize(std::max(line.size() + 1, meaningColumn), ' ');
        m_out << line << meaning << '\n';
        m_nAt += length;
    }

    bool Stop(std::string const& why) {
        m_strFault = why + ", with " + std::to_string(Left()) + " bytes left";
        m_out << "the map ends here, with " << Left() << " bytes left: " << why << '\n';
        return false;
    }

    bool Number(std::string const& meaning, std::uint32_t& number) {
        if (Left() < 4) return Stop("no room for the " + meaning);
        number = LoadLittleEndian<std::uint32_t>(Here());
        Field(4, meaning + " " + std::to_string(number));
        return true;
    }

    bool Text(std::size_t length, std::string const& meaning) {
        if (Left() < length) return Stop("the " + meaning + " is cut off");
        Field(length, meaning + " " + Quoted(m_image.substr(m_nAt, length)));
        return true;
    }

    bool Header(std::string const& id) {
        if (Left() <= id.size()) return Stop("no room for the identifier");
        Field(id.size() + 1, "identifier " + Quoted(id) + " and a zero byte");
        std::uint32_t version, size, count;
        if (!Number("version", version) || !Number("size of the names", size) ||
            !Number("number of names", count))
            return false;
        m_names.assign(1, "");
        const std::size_t end = m_nAt + size;
        while (m_names.size() <= count && m_nAt < end) {
            if (Left() == 0) return Stop("the names are cut off");
            const std::string name = m_image.substr(m_nAt, m_image.find('\0', m_nAt) - m_nAt);
            Field(std::min(name.size() + 1, Left()),
                  "name " + std::to_string(m_names.size()) + ", " + Quoted(name));
            m_names.push_back(name);
        }
        m_fTokens = true;
        return true;
    }

    bool Name() { return m_fTokens ? Token() : InlineName(); }

    bool Token() {
        if (Left() == 0) return Stop("no room for a name's token");
        std::size_t length = 1;
        std::uint32_t token = Here()[0];
        if (token == 0xFF) {
            if (Left() < 4) return Stop("a name's token is cut off");
            length = 4;
            token = LoadLittleEndian<std::uint32_t>(Here()) >> 8;
        }
        if (token < m_names.size()) m_nUnfolded += m_names[token].size();
        if (m_nUnfolded > codec::mostUnfoldedNames)
            return Stop("the names unfold to more than a load allows");
        const std::string name =
            token < m_names.size() ? Quoted(m_names[token]) : "beyond the names: empty";
        Field(length, "token " + std::to_string(token) + ", " + name);
        return true;
    }

    bool InlineName() {
        std::uint32_t length;
        return Number("length of the name", length) && (length == 0 || Text(length, "name"));
    }

    bool Entries() {
        // The name of the outermost block is not one of them.
        m_nUnfolded = 0;
        std::vector<std::int32_t> left(1);
        if (!Count(left.back())) return false;
        while (!left.empty()) {
            if (left.back() <= 0) {
                left.pop_back();
                continue;
            }
            --left.back();
            std::uint32_t tag;
            if (Left() < 4) return Stop("no room for the next type");
            tag = LoadLittleEndian<std::uint32_t>(Here());
            const bool known = tag >= tagString && tag <= tagBinaryBlock;
            Field(4, "type " + std::to_string(tag) + ", " + Word(known ? tag : 0));
            if (!known) continue;
            if (tag == tagBinaryBlock) return Stop("no image can hold this type");
            if (!Name()) return false;
            if (tag == tagBlock) {
                left.push_back(0);
                if (!Count(left.back())) return false;
            } else if (!Value(tag)) {
                return false;
            }
        }
        if (Left() > 0) return Stop("all entries are read");
        return true;
    }

    static std::string Word(std::uint32_t tag) {
        static constexpr const char* words[] = {"unknown: an empty entry",
                                                "string",
                                                "int",
                                                "double",
                                                "uint64",
                                                "fileId",
                                                "block",
                                                "bool",
                                                "float",
                                                "int64",
                                                "binary"};
        return words[tag];
    }

    bool Count(std::int32_t& count) {
        std::uint32_t number;
        if (!Number("number of entries", number)) return false;
        count = static_cast<std::int32_t>(number);
        return true;
    }

    bool Value(std::uint32_t tag) {
        switch (tag) {
            case tagString: {
                std::uint32_t length;
                return Number("length of the text", length) &&
                       (length == 0 || Text(length, "text"));
            }
            case tagInt:
                return ValueOf<CIntParameter>(4);
            case tagDouble:
                return ValueOf<CDoubleParameter>(8);
            case tagUInt64:
                return ValueOf<CUInt64Parameter>(8);
            case tagFileId:
                return ValueOf<CFileIdTypeParameter>(16);
            case tagBool:
                return ValueOf<CBoolParameter>(1);
            case tagFloat:
                return ValueOf<CFloatParameter>(4);
            default:
                return ValueOf<CSInt64Parameter>(8);
        }
    }

    template <typename Class>
    bool ValueOf(std::size_t length) {
        if (Left() < length) return Stop("a value is cut off");
        // The value stands behind an empty inline name.
        std::vector<unsigned char> bytes(4);
        bytes.insert(bytes.end(), Here(), Here() + length);
        Class parameter;
        parameter.Load(nullptr, bytes.size(), bytes.data());
        Field(length, "value " + ValueText(parameter));
        return true;
    }

    std::ostream& m_out;
    std::string const& m_image;
    std::size_t m_nAt = 0;
    bool m_fTokens = false;
    std::uint64_t m_nUnfolded = 0;
    std::string m_strFault;
    std::vector<std::string> m_names;
};

}  // namespace

std::string WriteByteMap(std::ostream& out, std::string const& image, std::string const* id) {
    CByteMap map(out, image);
    id != nullptr ? map.WriteSession(*id) : map.WriteBare();
    return map.Fault();
}
