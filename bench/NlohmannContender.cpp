#include <nlohmann/json.hpp>

#include "bench/Contender.h"

namespace {

using nlohmann::json;

json Make(CBenchNode const& node) {
    switch (node.kind) {
        case CBenchNode::text:
            return node.textValue;
        case CBenchNode::integer:
            return node.integerValue;
        case CBenchNode::real:
        case CBenchNode::single:
            return node.realValue;
        case CBenchNode::flag:
            return node.integerValue != 0;
        default:
            break;
    }
    if (node.kind == CBenchNode::list) {
        json list = json::array();
        for (CBenchNode const& child : node.children) list.push_back(Make(child));
        return list;
    }
    json made = json::object();
    for (CBenchNode const& child : node.children) made[child.name] = Make(child);
    return made;
}

struct CCbor {
    static constexpr const char* name = "nlohmann CBOR";
    static std::vector<std::uint8_t> Save(json const& tree) { return json::to_cbor(tree); }
    static json Load(std::string_view image) { return json::from_cbor(image); }
};

struct CMsgpack {
    static constexpr const char* name = "nlohmann MessagePack";
    static std::vector<std::uint8_t> Save(json const& tree) { return json::to_msgpack(tree); }
    static json Load(std::string_view image) { return json::from_msgpack(image); }
};

template <typename Format>
class CNlohmannContender : public CContender {
public:
    const char* Name() const override { return Format::name; }

    void Build(CBenchTree const& tree) override { m_tree = Make(tree.listed); }

    void BuildTwin() override { m_twin = m_tree; }

    std::size_t Save() override {
        m_image = Format::Save(m_tree);
        return m_image.size();
    }

    std::string_view Image() const override {
        return {reinterpret_cast<const char*>(m_image.data()), m_image.size()};
    }

    void Load(std::string_view image) override { m_loaded = Format::Load(image); }

    void Drop() override { m_loaded = nullptr; }

    void Copy() override { const json copy(m_tree); }

    bool Equal() override { return m_tree == m_twin; }

    bool Find(const char* name) override { return m_tree.find(name) != m_tree.end(); }

    bool LoadedIsEqual() override { return m_loaded == m_tree; }

private:
    json m_tree, m_twin, m_loaded;
    std::vector<std::uint8_t> m_image;
};

}  // namespace

std::unique_ptr<CContender> MakeNlohmannCborContender() {
    return std::make_unique<CNlohmannContender<CCbor>>();
}

std::unique_ptr<CContender> MakeNlohmannMsgpackContender() {
    return std::make_unique<CNlohmannContender<CMsgpack>>();
}
