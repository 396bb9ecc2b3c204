#pragma once

#include <boost/interprocess/mapped_region.hpp>
#include <boost/interprocess/shared_memory_object.hpp>
#include <cstddef>

/// An existing shared-memory object, opened for reading and writing and mapped whole for as long
/// as this object lives. Throws `boost::interprocess::interprocess_exception` when the object
/// cannot be opened or mapped.
class CMappedSegment {
public:
    explicit CMappedSegment(const char* szName)
        : m_object(boost::interprocess::open_only, szName, boost::interprocess::read_write),
          m_region(m_object, boost::interprocess::read_write) {}

    /// The first byte; null when the operating system mapped nothing.
    unsigned char* Bytes() const noexcept {
        return static_cast<unsigned char*>(m_region.get_address());
    }
    /// How many bytes are mapped.
    std::size_t Size() const noexcept { return m_region.get_size(); }
    /// The object's descriptor, still owned by this object.
    int Descriptor() const noexcept { return m_object.get_mapping_handle().handle; }

private:
    boost::interprocess::shared_memory_object m_object;
    boost::interprocess::mapped_region m_region;
};
