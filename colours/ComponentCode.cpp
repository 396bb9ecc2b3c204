#include "colours/ComponentCode.h"

#include "colours/SchemeBlocks.h"
#include "utils/ParameterBlock.h"

namespace {

constexpr const char* szCode = "Code";
constexpr const char* szModule = "Mod";
constexpr const char* szComponentID = "CompID";

}  // namespace

void CComponentCode::Save(CParameterBlock* block) const {
    CParameterBlock& code = AppendBlock(*block, szCode);
    code.AddParameter(szModule, m_nModule);
    code.AddParameter(szComponentID, m_nCompID);
}

bool CComponentCode::Load(CParameterBlock* block) {
    CParameterBlock* code = nullptr;
    if (!block->FindParameter(szCode, &code)) return false;
    const bool fModule = code->FindParameter(szModule, &m_nModule, 0);
    const bool fComponent = code->FindParameter(szComponentID, &m_nCompID, 0);
    return fModule && fComponent;
}
