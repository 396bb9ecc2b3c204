#include <bit>
#include <boost/endian/conversion.hpp>
#include <cstring>
#include <msgpack.hpp>

#include "bench/Contender.h"

namespace {

msgpack::object Make(CBenchNode const& node, msgpack::zone& zone);

msgpack::object MakeText(std::string const& text, msgpack::zone& zone) {
    char* bytes = static_cast<char*>(zone.allocate_no_align(text.size()));
    std::memcpy(bytes, text.data(), text.size());
    msgpack::object made;
    made.type = msgpack::type::STR;
    made.via.str.ptr = bytes;
    made.via.str.size = static_cast<std::uint32_t>(text.size());
    return made;
}

msgpack::object MakeList(CBenchNode const& node, msgpack::zone& zone) {
    msgpack::object made;
    made.type = msgpack::type::ARRAY;
    made.via.array.size = static_cast<std::uint32_t>(node.children.size());
    made.via.array.ptr = static_cast<msgpack::object*>(zone.allocate_align(
        sizeof(msgpack::object) * node.children.size(), MSGPACK_ZONE_ALIGNOF(msgpack::object)));
    for (std::size_t i = 0; i < node.children.size(); ++i)
        made.via.array.ptr[i] = Make(node.children[i], zone);
    return made;
}

msgpack::object MakeMap(CBenchNode const& node, msgpack::zone& zone) {
    msgpack::object made;
    made.type = msgpack::type::MAP;
    made.via.map.size = static_cast<std::uint32_t>(node.children.size());
    made.via.map.ptr = static_cast<msgpack::object_kv*>(
        zone.allocate_align(sizeof(msgpack::object_kv) * node.children.size(),
                            MSGPACK_ZONE_ALIGNOF(msgpack::object_kv)));
    for (std::size_t i = 0; i < node.children.size(); ++i) {
        made.via.map.ptr[i].key = MakeText(node.children[i].name, zone);
        made.via.map.ptr[i].val = Make(node.children[i], zone);
    }
    return made;
}

msgpack::object Make(CBenchNode const& node, msgpack::zone& zone) {
    switch (node.kind) {
        case CBenchNode::text:
            return MakeText(node.textValue, zone);
        case CBenchNode::integer:
            return msgpack::object(node.integerValue);
        case CBenchNode::real:
            return msgpack::object(node.realValue);
        case CBenchNode::single:
            return msgpack::object(static_cast<float>(node.realValue));
        case CBenchNode::flag:
            return msgpack::object(node.integerValue != 0);
        case CBenchNode::list:
            return MakeList(node, zone);
        default:
            return MakeMap(node, zone);
    }
}

// The library's way to write, except that it would turn floating numbers of whole value into
// integers, which are other values when they are loaded.
class CPackVisitor : public msgpack::object_pack_visitor<msgpack::sbuffer> {
public:
    explicit CPackVisitor(msgpack::sbuffer& image)
        : object_pack_visitor(m_packer), m_image(image), m_packer(image) {}

    bool visit_float32(float value) { return Write('\xCA', std::bit_cast<std::uint32_t>(value)); }
    bool visit_float64(double value) { return Write('\xCB', std::bit_cast<std::uint64_t>(value)); }

private:
    template <typename Word>
    bool Write(char mark, Word word) {
        char bytes[1 + sizeof word];
        bytes[0] = mark;
        boost::endian::native_to_big_inplace(word);
        std::memcpy(bytes + 1, &word, sizeof word);
        m_image.write(bytes, sizeof bytes);
        return true;
    }

    msgpack::sbuffer& m_image;
    msgpack::packer<msgpack::sbuffer> m_packer;
};

class CMsgpackContender : public CContender {
public:
    const char* Name() const override { return "msgpack-cxx"; }

    void Build(CBenchTree const& tree) override {
        m_pZone = std::make_unique<msgpack::zone>();
        m_tree = Make(tree.listed, *m_pZone);
    }

    void BuildTwin() override { m_twin = msgpack::clone(m_tree); }

    std::size_t Save() override {
        m_image = msgpack::sbuffer();
        CPackVisitor visitor(m_image);
        msgpack::object_parser(m_tree).parse(visitor);
        return m_image.size();
    }

    std::string_view Image() const override { return {m_image.data(), m_image.size()}; }

    void Load(std::string_view image) override {
        m_loaded = msgpack::unpack(image.data(), image.size());
    }

    void Drop() override { m_loaded = msgpack::object_handle(); }

    void Copy() override { const msgpack::object_handle copy = msgpack::clone(m_tree); }

    bool Equal() override { return m_tree == m_twin.get(); }

    bool Find(const char* name) override {
        const std::string_view wanted = name;
        for (std::uint32_t i = 0; i < m_tree.via.map.size; ++i) {
            auto const& key = m_tree.via.map.ptr[i].key.via.str;
            if (std::string_view(key.ptr, key.size) == wanted) return true;
        }
        return false;
    }

    bool LoadedIsEqual() override { return m_loaded.get() == m_tree; }

private:
    std::unique_ptr<msgpack::zone> m_pZone;
    msgpack::object m_tree;
    msgpack::object_handle m_twin;
    msgpack::sbuffer m_image;
    msgpack::object_handle m_loaded;
};

}  // namespace

std::unique_ptr<CContender> MakeMsgpackContender() {
    return std::make_unique<CMsgpackContender>();
}
