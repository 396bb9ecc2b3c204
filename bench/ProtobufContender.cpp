#include <google/protobuf/struct.pb.h>
#include <google/protobuf/util/message_differencer.h>

#include "bench/Contender.h"

namespace {

using google::protobuf::Struct;
using google::protobuf::Value;

void Fill(Struct& made, CBenchNode const& node);

void Fill(Value& value, CBenchNode const& node) {
    switch (node.kind) {
        case CBenchNode::text:
            value.set_string_value(node.textValue);
            break;
        case CBenchNode::integer:
            value.set_number_value(static_cast<double>(node.integerValue));
            break;
        case CBenchNode::real:
        case CBenchNode::single:
            value.set_number_value(node.realValue);
            break;
        case CBenchNode::flag:
            value.set_bool_value(node.integerValue != 0);
            break;
        case CBenchNode::list:
            for (CBenchNode const& child : node.children)
                Fill(*value.mutable_list_value()->add_values(), child);
            break;
        default:
            Fill(*value.mutable_struct_value(), node);
            break;
    }
}

void Fill(Struct& made, CBenchNode const& node) {
    for (CBenchNode const& child : node.children) Fill((*made.mutable_fields())[child.name], child);
}

class CProtobufContender : public CContender {
public:
    const char* Name() const override { return "protobuf Struct"; }

    void Build(CBenchTree const& tree) override {
        m_tree = Struct();
        if (tree.listed.kind != CBenchNode::list) return Fill(m_tree, tree.listed);
        // The topmost form of this library is a block; a list stands in one.
        CBenchNode outer;
        outer.children.push_back(tree.listed);
        Fill(m_tree, outer);
    }

    void BuildTwin() override { m_twin = m_tree; }

    std::size_t Save() override {
        m_strImage = std::string();
        m_tree.SerializeToString(&m_strImage);
        return m_strImage.size();
    }

    std::string_view Image() const override { return m_strImage; }

    void Load(std::string_view image) override {
        m_pLoaded = std::make_unique<Struct>();
        m_pLoaded->ParseFromArray(image.data(), static_cast<int>(image.size()));
    }

    void Drop() override { m_pLoaded.reset(); }

    void Copy() override { const Struct copy(m_tree); }

    bool Equal() override {
        return google::protobuf::util::MessageDifferencer::Equals(m_tree, m_twin);
    }

    bool Find(const char* name) override {
        return m_tree.fields().find(name) != m_tree.fields().end();
    }

    bool LoadedIsEqual() override {
        return google::protobuf::util::MessageDifferencer::Equals(*m_pLoaded, m_tree);
    }

private:
    Struct m_tree, m_twin;
    std::unique_ptr<Struct> m_pLoaded;
    std::string m_strImage;
};

}  // namespace

std::unique_ptr<CContender> MakeProtobufContender() {
    return std::make_unique<CProtobufContender>();
}
