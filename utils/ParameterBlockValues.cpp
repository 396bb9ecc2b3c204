#include "utils/ParameterBlockValues.h"

#include <locale>
#include <sstream>
#include <typeinfo>

#include "platform/Assertion.h"
#include "utils/ParameterBlockCodec.h"

namespace {

std::string OrEmpty(const char* text) {
    return text != nullptr ? text : "";
}

template <typename Class>
Class const& SameClass(CParameter const* source) {
    TAVARIN_REQUIRE(source != nullptr);
    TAVARIN_REQUIRE(source->type == Class::tag);
    return static_cast<Class const&>(*source);
}

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

}  // namespace

unsigned long CParameter::GetSizeOfName() const {
    return codec::NameSize(*this);
}

unsigned long CParameter::SaveName(unsigned char* out) const {
    return static_cast<unsigned long>(codec::StoreName(*this, out) - out);
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
CValueParameter<Value, Tag>::CValueParameter(const char* parameterName, Value parameterValue)
    : CParameter(Tag, OrEmpty(parameterName)), value(parameterValue) {}

template <typename Value, std::uint32_t Tag>
CValueParameter<Value, Tag>::CValueParameter(CParameter const* source)
    : CValueParameter(SameClass<CValueParameter>(source)) {}

template <typename Value, std::uint32_t Tag>
CValueParameter<Value, Tag>::CValueParameter(CValueParameter const& source)
    : CParameter(Tag, source.name), value(source.value) {}

template <typename Value, std::uint32_t Tag>
CValueParameter<Value, Tag>& CValueParameter<Value, Tag>::operator=(CValueParameter const& source) {
    name = source.name;
    value = source.value;
    return *this;
}

template <typename Value, std::uint32_t Tag>
std::string CValueParameter<Value, Tag>::GetString() const {
    return ValueText(value);
}

template <typename Value, std::uint32_t Tag>
unsigned long CValueParameter<Value, Tag>::GetSize() const {
    return codec::NameSize(*this) + codec::ValueSize(*this);
}

template <typename Value, std::uint32_t Tag>
unsigned long CValueParameter<Value, Tag>::Save(unsigned long, unsigned char* out) const {
    unsigned char* end = codec::StoreValue(*this, codec::StoreName(*this, out));
    return static_cast<unsigned long>(end - out);
}

template <typename Value, std::uint32_t Tag>
unsigned long CValueParameter<Value, Tag>::Load(std::vector<std::string> const* names,
                                                unsigned long size, unsigned char const* data) {
    return codec::Load(*this, names, size, data);
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

template class CValueParameter<std::int32_t, tagInt>;
template class CValueParameter<double, tagDouble>;
template class CValueParameter<unsigned long long, tagUInt64>;
template class CValueParameter<KEL::FileIdType, tagFileId>;
template class CValueParameter<bool, tagBool>;
template class CValueParameter<float, tagFloat>;
template class CValueParameter<long long, tagSInt64>;

CStringParameter::CStringParameter(const char* parameterName, const char* parameterValue)
    : CParameter(tag, OrEmpty(parameterName)), value(OrEmpty(parameterValue)) {}

CStringParameter::CStringParameter(CParameter const* source)
    : CStringParameter(SameClass<CStringParameter>(source)) {}

CStringParameter::CStringParameter(CStringParameter const& source)
    : CParameter(tag, source.name), value(source.value) {}

CStringParameter& CStringParameter::operator=(CStringParameter const& source) {
    name = source.name;
    value = source.value;
    return *this;
}

std::string CStringParameter::GetString() const {
    return value;
}

unsigned long CStringParameter::GetSize() const {
    return codec::NameSize(*this) + codec::ValueSize(*this);
}

unsigned long CStringParameter::Save(unsigned long, unsigned char* out) const {
    unsigned char* end = codec::StoreValue(*this, codec::StoreName(*this, out));
    return static_cast<unsigned long>(end - out);
}

unsigned long CStringParameter::Load(std::vector<std::string> const* names, unsigned long size,
                                     unsigned char const* data) {
    return codec::Load(*this, names, size, data);
}

CParameter& CStringParameter::operator=(CParameter& source) {
    return *this = dynamic_cast<CStringParameter const&>(source);
}

bool CStringParameter::operator==(CParameter const& other) const {
    if (other.type != type || other.name != name) return false;
    return static_cast<CStringParameter const&>(other).value == value;
}
