#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include "bench/Contender.h"

namespace {

using rapidjson::Document;
using rapidjson::Value;

Value Make(CBenchNode const& node, Document::AllocatorType& allocator);

Value MakeList(CBenchNode const& node, Document::AllocatorType& allocator) {
    Value made(rapidjson::kArrayType);
    for (CBenchNode const& child : node.children) made.PushBack(Make(child, allocator), allocator);
    return made;
}

Value MakeObject(CBenchNode const& node, Document::AllocatorType& allocator) {
    Value made(rapidjson::kObjectType);
    for (CBenchNode const& child : node.children)
        made.AddMember(Value(child.name, allocator), Make(child, allocator), allocator);
    return made;
}

Value Make(CBenchNode const& node, Document::AllocatorType& allocator) {
    switch (node.kind) {
        case CBenchNode::text:
            return Value(node.textValue, allocator);
        case CBenchNode::integer:
            return Value(static_cast<int>(node.integerValue));
        case CBenchNode::real:
        case CBenchNode::single:
            return Value(node.realValue);
        case CBenchNode::flag:
            return Value(node.integerValue != 0);
        case CBenchNode::list:
            return MakeList(node, allocator);
        default:
            return MakeObject(node, allocator);
    }
}

class CRapidJsonContender : public CContender {
public:
    const char* Name() const override { return "RapidJSON"; }

    void Build(CBenchTree const& tree) override {
        Document().Swap(m_tree);
        Value made = Make(tree.listed, m_tree.GetAllocator());
        m_tree.Value::Swap(made);
    }

    void BuildTwin() override {
        Document().Swap(m_twin);
        m_twin.CopyFrom(m_tree, m_twin.GetAllocator());
    }

    std::size_t Save() override {
        m_image = rapidjson::StringBuffer();
        rapidjson::Writer<rapidjson::StringBuffer> writer(m_image);
        m_tree.Accept(writer);
        return m_image.GetSize();
    }

    std::string_view Image() const override { return {m_image.GetString(), m_image.GetSize()}; }

    void Load(std::string_view image) override {
        m_pLoaded = std::make_unique<Document>();
        m_pLoaded->Parse<rapidjson::kParseFullPrecisionFlag>(image.data(), image.size());
    }

    void Drop() override { m_pLoaded.reset(); }

    void Copy() override {
        Document copy;
        copy.CopyFrom(m_tree, copy.GetAllocator());
    }

    bool Equal() override { return m_tree == m_twin; }

    bool Find(const char* name) override { return m_tree.FindMember(name) != m_tree.MemberEnd(); }

    bool LoadedIsEqual() override { return *m_pLoaded == m_tree; }

private:
    Document m_tree, m_twin;
    std::unique_ptr<Document> m_pLoaded;
    rapidjson::StringBuffer m_image;
};

}  // namespace

std::unique_ptr<CContender> MakeRapidJsonContender() {
    return std::make_unique<CRapidJsonContender>();
}
