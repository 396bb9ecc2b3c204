#include <CoreFoundation/CoreFoundation.h>

#include "bench/Contender.h"
#include "utils/ParameterBlock.h"

namespace {

void Fill(CParameterBlock& block, CBenchNode const& node) {
    for (CBenchNode const& child : node.children) {
        const char* name = child.name.c_str();
        switch (child.kind) {
            case CBenchNode::block: {
                const CParameterBlock empty;
                block.AddParameter(name, &empty);
                Fill(static_cast<CParameterBlock&>(*block.parameters.back()), child);
                break;
            }
            case CBenchNode::list:
                break;
            case CBenchNode::text:
                block.AddParameter(name, child.textValue.c_str());
                break;
            case CBenchNode::integer:
                block.AddParameter(name, static_cast<int>(child.integerValue));
                break;
            case CBenchNode::real:
                block.AddParameter(name, child.realValue);
                break;
            case CBenchNode::single:
                block.AddParameter(name, static_cast<float>(child.realValue));
                break;
            case CBenchNode::flag:
                block.AddParameter(name, child.integerValue != 0);
                break;
        }
    }
}

class CParameterBlockContender : public CContender {
public:
    ~CParameterBlockContender() override { DropImage(); }

    const char* Name() const override { return "parameter block"; }

    void Build(CBenchTree const& tree) override {
        m_tree.Clear();
        Fill(m_tree, tree.repeating);
    }

    void BuildTwin() override { m_twin = m_tree; }

    std::size_t Save() override {
        DropImage();
        m_image = CFDataCreateMutable(kCFAllocatorDefault, 0);
        m_nLength = m_tree.SaveBinarySessionToMemory("bench", m_image);
        return m_nLength;
    }

    std::string_view Image() const override {
        return {reinterpret_cast<const char*>(CFDataGetBytePtr(m_image)), m_nLength};
    }

    void Load(std::string_view image) override {
        m_pLoaded = std::make_unique<CParameterBlock>();
        m_pLoaded->LoadBinarySessionFromMemory(&m_ids,
                                               reinterpret_cast<unsigned char const*>(image.data()),
                                               static_cast<unsigned int>(image.size()));
    }

    void Drop() override { m_pLoaded.reset(); }

    void Copy() override { const CParameterBlock copy(m_tree); }

    bool Equal() override { return m_tree == m_twin; }

    bool Find(const char* name) override {
        std::string text;
        int number;
        double real;
        float single;
        bool flag;
        CParameterBlock* block;
        // The kind is known to who asks; the name's last digit tells it here.
        switch (name[0] == 'C' ? 5 : (std::string_view(name).back() - '0') % 5) {
            case 0:
                return m_tree.FindParameter(name, &number, 0);
            case 1:
                return m_tree.FindParameter(name, &real, 0.0);
            case 2:
                return m_tree.FindParameter(name, &text, nullptr);
            case 3:
                return m_tree.FindParameter(name, &single, 0.0f);
            case 4:
                return m_tree.FindParameter(name, &flag, false);
            default:
                return m_tree.FindParameter(name, &block);
        }
    }

    bool LoadedIsEqual() override { return *m_pLoaded == m_tree; }

private:
    void DropImage() {
        if (m_image != nullptr) CFRelease(m_image);
        m_image = nullptr;
    }

    CParameterBlock m_tree, m_twin;
    std::unique_ptr<CParameterBlock> m_pLoaded;
    CFMutableDataRef m_image = nullptr;
    std::size_t m_nLength = 0;
    const std::vector<const char*> m_ids{"bench"};
};

}  // namespace

std::unique_ptr<CContender> MakeParameterBlockContender() {
    return std::make_unique<CParameterBlockContender>();
}
