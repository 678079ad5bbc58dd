#include "broker/Names.h"

#include <algorithm>
#include <iterator>

namespace broker {
namespace {

// Numbers instead of the names of <cmpidt.h>, since not every edition of that header has all of them.
struct StatusName {
    int rc;
    const char* name;
};
constexpr StatusName STATUS_NAMES[] = {
    {0, "CMPI_RC_OK"},
    {1, "CMPI_RC_ERR_FAILED"},
    {2, "CMPI_RC_ERR_ACCESS_DENIED"},
    {3, "CMPI_RC_ERR_INVALID_NAMESPACE"},
    {4, "CMPI_RC_ERR_INVALID_PARAMETER"},
    {5, "CMPI_RC_ERR_INVALID_CLASS"},
    {6, "CMPI_RC_ERR_NOT_FOUND"},
    {7, "CMPI_RC_ERR_NOT_SUPPORTED"},
    {8, "CMPI_RC_ERR_CLASS_HAS_CHILDREN"},
    {9, "CMPI_RC_ERR_CLASS_HAS_INSTANCES"},
    {10, "CMPI_RC_ERR_INVALID_SUPERCLASS"},
    {11, "CMPI_RC_ERR_ALREADY_EXISTS"},
    {12, "CMPI_RC_ERR_NO_SUCH_PROPERTY"},
    {13, "CMPI_RC_ERR_TYPE_MISMATCH"},
    {14, "CMPI_RC_ERR_QUERY_LANGUAGE_NOT_SUPPORTED"},
    {15, "CMPI_RC_ERR_INVALID_QUERY"},
    {16, "CMPI_RC_ERR_METHOD_NOT_AVAILABLE"},
    {17, "CMPI_RC_ERR_METHOD_NOT_FOUND"},
    {18, "CMPI_RC_NO_MORE_ELEMENTS"},
    {27, "CMPI_RC_ERR_SERVER_LIMITS_EXCEEDED"},
    {29, "CMPI_RC_ERR_QUERY_FEATURE_NOT_SUPPORTED"},
    {50, "CMPI_RC_DO_NOT_UNLOAD"},
    {51, "CMPI_RC_NEVER_UNLOAD"},
    {60, "CMPI_RC_ERR_INVALID_HANDLE"},
    {61, "CMPI_RC_ERR_INVALID_DATA_TYPE"},
    {62, "CMPI_RC_ERR_NOT_IN_CODEPAGE"},
    {100, "CMPI_RC_ERROR_SYSTEM"},
    {200, "CMPI_RC_ERROR"},
};

struct TypeName {
    CMPIType type;
    const char* name;
};
constexpr TypeName TYPE_NAMES[] = {
    {CMPI_boolean, "boolean"},   {CMPI_char16, "char16"}, {CMPI_real32, "real32"},     {CMPI_real64, "real64"},
    {CMPI_uint8, "uint8"},       {CMPI_uint16, "uint16"}, {CMPI_uint32, "uint32"},     {CMPI_uint64, "uint64"},
    {CMPI_sint8, "sint8"},       {CMPI_sint16, "sint16"}, {CMPI_sint32, "sint32"},     {CMPI_sint64, "sint64"},
    {CMPI_string, "string"},     {CMPI_chars, "string"},  {CMPI_dateTime, "datetime"}, {CMPI_ref, "ref"},
    {CMPI_instance, "instance"}, {CMPI_null, "null"},
};

}  // namespace

char lowered(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

std::string lowered(std::string_view text) {
    std::string result(text);
    for (char& c : result) c = lowered(c);
    return result;
}

bool sameName(std::string_view left, std::string_view right) {
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](char l, char r) { return lowered(l) == lowered(r); });
}

std::string nameOfStatus(int rc) {
    const auto* found = std::find_if(std::begin(STATUS_NAMES), std::end(STATUS_NAMES),
                                     [rc](const StatusName& status) { return status.rc == rc; });
    return found == std::end(STATUS_NAMES) ? "CMPI_RC_" + std::to_string(rc) : found->name;
}

std::string nameOfType(CMPIType type) {
    const auto simple = static_cast<CMPIType>(type & ~CMPI_ARRAY);
    const auto* found = std::find_if(std::begin(TYPE_NAMES), std::end(TYPE_NAMES),
                                     [simple](const TypeName& name) { return name.type == simple; });
    const std::string name = found == std::end(TYPE_NAMES) ? "type" + std::to_string(simple) : found->name;
    return (type & CMPI_ARRAY) != 0 ? name + "[]" : name;
}

}  // namespace broker
