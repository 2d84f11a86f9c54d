/*
 * The bytes libprotobuf's coded stream writes for the same content: the
 * reference the plug-in's GPB writers are held to, in tests and fuzz targets.
 */
#ifndef MDTLM_TEST_CODED_REFERENCE_H
#define MDTLM_TEST_CODED_REFERENCE_H

#include <cstdint>
#include <string>

#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/io/zero_copy_stream_impl_lite.h>

template <typename Fn>
std::string CodedReference(Fn write)
{
    std::string out;
    {
        google::protobuf::io::StringOutputStream string(&out);
        google::protobuf::io::CodedOutputStream stream(&string);
        write(stream);
    }
    return out;
}

/* A length-delimited field: key of wire type 2, length, bytes. */
inline void WriteDelimited(google::protobuf::io::CodedOutputStream &s, uint32_t field, const std::string &bytes)
{
    s.WriteTag((field << 3) | 2);
    s.WriteVarint32(static_cast<uint32_t>(bytes.size()));
    s.WriteString(bytes);
}

#endif /* MDTLM_TEST_CODED_REFERENCE_H */
