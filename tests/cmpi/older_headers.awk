# Turns one of our CMPI headers into the form that the generation before it had, which Linux distributions carry:
#  - the headers include each other with quotes, cmpift.h brings cmpimacs.h, and a platform symbol must be defined;
#  - nothing of level 210: no type CMPIVersion, and CMPI_VERSION need not be defined at all;
#  - the pointers in objects are to things not const, and setters take an object that is not const;
#  - macros instead of inline functions, and a value argument is cast to CMPIValue*.

# Whether the line belongs to something that only level 210 has.
function droppedByLevel() {
    if ($0 ~ /^#if/) {
        ++depth
        if ($0 == "#ifdef CMPI_VER_210") {
            levelDepth = depth
            dropping = 1
            return 1
        }
    } else if (levelDepth && depth == levelDepth && $0 == "#else") {
        dropping = 0
        return 1
    } else if ($0 ~ /^#endif/) {
        --depth
        if (levelDepth == depth + 1) {
            levelDepth = 0
            dropping = 0
            return 1
        }
    }
    return dropping
}

# The words of text that are parameters get parentheses, a value its cast; words after -> are members and stay.
function withArguments(text, before, word, out) {
    out = ""
    while (match(text, /[A-Za-z_][A-Za-z0-9_]*/)) {
        before = out substr(text, 1, RSTART - 1)
        word = substr(text, RSTART, RLENGTH)
        text = substr(text, RSTART + RLENGTH)
        if ((word in parameter) && before !~ /->$/) {
            word = word == "value" ? "((CMPIValue*)(value))" : "(" word ")"
        }
        out = before word
    }
    return out text
}

function asMacro(text, head, name, list, body, i, count, parts) {
    gsub(/[ \n]+/, " ", text)
    head = substr(text, 1, index(text, " {") - 1)
    name = substr(head, 1, index(head, "(") - 1)
    sub(/.*[ *]/, "", name)
    if (name == "CBGetCapabilities") return ""
    if (name in oldForm) return oldForm[name]

    list = head
    sub(/^[^(]*\(/, "", list)
    sub(/\)$/, "", list)
    count = split(list, parts, ",")
    split("", parameter)
    list = ""
    for (i = 1; i <= count; ++i) {
        sub(/.*[ *]/, "", parts[i])
        parameter[parts[i]] = 1
        list = list (i > 1 ? ", " : "") parts[i]
    }
    body = text
    sub(/.*[{] return /, "", body)
    sub(/; [}]$/, "", body)
    return "#define " name "(" list ") (" withArguments(body) ")"
}

BEGIN {
    oldForm["CMSetStatus"] = "#define CMSetStatus(st, code) { (st)->rc = (code); (st)->msg = NULL; }"
    oldForm["CMSetStatusWithString"] = "#define CMSetStatusWithString(st, code, str) " \
        "{ (st)->rc = (code); (st)->msg = (str); }"
    oldForm["CMSetStatusWithChars"] = "#define CMSetStatusWithChars(mb, st, code, chars) " \
        "{ (st)->rc = (code); (st)->msg = (mb)->eft->newString((mb), (chars), NULL); }"
    oldForm["CMIsNullObject"] = "#define CMIsNullObject(obj) ((obj) == NULL || *(void**)(obj) == NULL)"
    oldForm["CMIsNullValue"] = "#define CMIsNullValue(data) ((data).state & CMPI_nullValue)"
    oldForm["CMIsKeyValue"] = "#define CMIsKeyValue(data) ((data).state & CMPI_keyValue)"
    oldForm["CMIsArray"] = "#define CMIsArray(data) ((data).type & CMPI_ARRAY)"
    oldForm["CMGetCharPtr"] = "#define CMGetCharPtr(str) ((char*)(str)->hdl)"

    levels = "#define CMPIVersion100 100\n" \
        "#define CMPIVersion200 200\n" \
        "#if defined(CMPI_VERSION) && CMPI_VERSION == 100\n" \
        "#define CMPI_VER_100\n" \
        "#define CMPICurrentVersion CMPIVersion100\n" \
        "#elif !defined(CMPI_VERSION) || CMPI_VERSION == 200\n" \
        "#define CMPI_VER_100\n" \
        "#define CMPI_VER_200\n" \
        "#define CMPICurrentVersion CMPIVersion200\n" \
        "#else\n" \
        "#error \"unknown CMPI_VERSION\"\n" \
        "#endif\n"
}

# A block of its own form in each generation.
/^\/\/ ---- Levels/ { print levels; skippingLevels = 1 }
skippingLevels {
    if ($0 != "#ifdef __cplusplus") next
    skippingLevels = 0
}
droppedByLevel() { next }
/Level 210, though declared at every level/ { skippingSlots = 1 }
skippingSlots && /^};/ { skippingSlots = 0 }
skippingSlots { next }
/^typedef int CMPIVersion;|^#define CMPI_IMPORT|^#define CMInitHook/ { skippingMacro = /\\$/; next }
skippingMacro { skippingMacro = /\\$/; next }

/^#define ZELSENSORS_CMPI_CMPIPL_H/ {
    print
    print "#ifndef CMPI_PLATFORM_LINUX_GENERIC_GNU\n#error \"no CMPI_PLATFORM_ symbol\"\n#endif"
    next
}
/^#endif  \/\/ ZELSENSORS_CMPI_CMPIFT_H/ { print "#include \"cmpimacs.h\"" }
/^#include <cmpi/ { gsub(/[<>]/, "\"") }

{
    sub(/CMPIVersion brokerVersion/, "unsigned int brokerVersion")
    gsub(/CMPIVersion /, "int ")
}
/^struct _/ { inProvider = /CMPIInstanceMI/ }
/^    const void\* hdl;/ && !inProvider { sub(/const /, "") }
/^    const CMPI[A-Za-z]+FT\* [bexm]?ft;/ { sub(/const /, "") }
/\(\*(setElementAt|setPropertyFilter|setObjectPath|setNameSpace|setHostname|setClassName|addKey)\)/ ||
    /\(\*set(HostAnd)?NameSpaceFromObjectPath\)/ || /\(\*set[A-Za-z]+\)\(const CMPIError\*/ { sub(/\(const /, "(") }
/\(\*(logMessage|trace)\)/ { sub(/CMPI(Severity|Level) /, "int ") }

# Return macros are blocks and nothing more; the factory neither is const nor presets the status.
/^    do [{] +\\$/ { sub(/do [{]/, "   {") }
/^    [}] while \(0\)$/ { sub(/ while \(0\)/, "") }
/static const CMPIInstanceMIFT/ { sub(/const /, ""); gsub(/CMPI_VERSION/, "CMPICurrentVersion") }
/CMSetStatus\(rc, CMPI_RC_OK\)/ { next }

/^static inline / { function_ = ""; inFunction = 1 }
inFunction {
    function_ = function_ $0 "\n"
    if ($0 == "}") {
        sub(/\n$/, "", function_)
        print asMacro(function_)
        inFunction = 0
    }
    next
}
{ print }
