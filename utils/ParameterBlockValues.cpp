#include "utils/ParameterBlockValues.h"

#include <locale>
#include <sstream>
#include <typeinfo>

#include "platform/Assertion.h"
#include "utils/ParameterBlockCodec.h"

namespace {

using namespace codec;

template <typename Value>
std::string ValueText(Value value) {
    std::ostringstream stream;
    stream.imbue(std::locale::classic());
    stream << value;
    return stream.str();
}

std::string ValueText(KEL::FileIdType const&) {
    return "FileID";
}

std::string ValueText(std::string const& value) {
    return value;
}

}  // namespace

unsigned long CParameter::GetSizeOfName() const {
    return token == noToken ? ValueSize(name) : TokenSize(token);
}

unsigned long CParameter::SaveName(unsigned char* out) const {
    unsigned char* const end = token == noToken ? SaveValue(name, out) : SaveToken(token, out);
    return static_cast<unsigned long>(end - out);
}

unsigned int CParameter::LoadName(std::vector<std::string> const* names, unsigned int size,
                                  unsigned char const* data) {
    return static_cast<unsigned int>(codec::LoadName(*this, names, size, data));
}

void CParameter::AddNameToMap(std::map<std::string, int>& counts) const {
    if (!name.empty()) ++counts[name];
}

void CParameter::UpdateTokenFromMap(std::map<std::string, int> const& tokens) {
    const auto found = name.empty() ? tokens.end() : tokens.find(name);
    token = found != tokens.end() ? static_cast<std::uint32_t>(found->second) : 0;
}

template <typename Value, std::uint32_t Tag>
CValueParameter<Value, Tag>::CValueParameter(const char* parameterName, Argument parameterValue)
    : CParameter(Tag, OrEmpty(parameterName)), value(OrEmpty(parameterValue)) {}

template <typename Value, std::uint32_t Tag>
CValueParameter<Value, Tag>::CValueParameter(CParameter const* source)
    : CValueParameter(SameClass<CValueParameter>(source)) {}

template <typename Value, std::uint32_t Tag>
std::string CValueParameter<Value, Tag>::GetString() const {
    return ValueText(value);
}

template <typename Value, std::uint32_t Tag>
unsigned long CValueParameter<Value, Tag>::GetSize() const {
    return GetSizeOfName() + ValueSize(value);
}

template <typename Value, std::uint32_t Tag>
unsigned long CValueParameter<Value, Tag>::Save(unsigned long, unsigned char* out) const {
    return static_cast<unsigned long>(SaveValue(value, out + SaveName(out)) - out);
}

template <typename Value, std::uint32_t Tag>
unsigned long CValueParameter<Value, Tag>::Load(std::vector<std::string> const* names,
                                                unsigned long size, unsigned char const* data) {
    const std::size_t nameBytes = codec::LoadName(*this, names, size, data);
    return nameBytes + LoadValue(value, size - nameBytes, data + nameBytes);
}

template <typename Value, std::uint32_t Tag>
CParameter& CValueParameter<Value, Tag>::operator=(CParameter& source) {
    return *this = dynamic_cast<CValueParameter const&>(source);
}

template <typename Value, std::uint32_t Tag>
bool CValueParameter<Value, Tag>::operator==(CParameter const& other) const {
    if (other.type != type || other.name != name) return false;
    return static_cast<CValueParameter const&>(other).value == value;
}

template class CValueParameter<std::string, tagString>;
template class CValueParameter<std::int32_t, tagInt>;
template class CValueParameter<double, tagDouble>;
template class CValueParameter<unsigned long long, tagUInt64>;
template class CValueParameter<KEL::FileIdType, tagFileId>;
template class CValueParameter<bool, tagBool>;
template class CValueParameter<float, tagFloat>;
template class CValueParameter<long long, tagSInt64>;
