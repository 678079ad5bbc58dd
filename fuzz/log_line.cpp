// The log's front end, its sink and its lines. The input is a list of calls: which one, at which level, with which
// texts and numbers, in which locale. What arrives in the log file must be, to the byte, a line of the log's grammar
// around the message as it is put together here by other means, cut as it must be, or nothing where the call must be
// dropped.
#include <fcntl.h>
#include <locale.h>
#include <log.h>
#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>

#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <cwchar>
#include <optional>
#include <string>

#include "ConfigurationFiles.h"
#include "Input.h"
#include "Property.h"
#include "Streams.h"

namespace {

constexpr std::size_t LONGEST = 4095;  // of a formatted text, in bytes and in wide characters
constexpr unsigned MOST_CALLS = 8;

// The log file, read back and emptied by the fuzzer's own descriptor.
class LogFile {
  public:
    LogFile() {
        const char* directory = std::getenv("TMPDIR");
        m_path = std::string(directory == nullptr ? "/tmp" : directory) + "/zelsensors-fuzz-XXXXXX";
        m_descriptor = mkostemp(m_path.data(), O_CLOEXEC);
        require(m_descriptor >= 0, "a log file can be made");
    }
    ~LogFile() {
        unlink(m_path.c_str());
        close(m_descriptor);
    }
    LogFile(const LogFile&) = delete;
    LogFile& operator=(const LogFile&) = delete;

    const std::string& path() const { return m_path; }

    std::string take() const {
        struct stat status {};
        require(fstat(m_descriptor, &status) == 0, "the log file has a size");
        std::string contents(static_cast<std::size_t>(status.st_size), '\0');
        require(pread(m_descriptor, contents.data(), contents.size(), 0) == status.st_size, "the log file is read");
        require(ftruncate(m_descriptor, 0) == 0, "the log file is emptied");
        return contents;
    }

  private:
    std::string m_path;
    int m_descriptor;
};

LogFile& logFile() {
    static LogFile file;
    return file;
}

struct Locales {
    locale_t utf8 = newlocale(LC_ALL_MASK, "C.UTF-8", nullptr);
    locale_t plain = newlocale(LC_ALL_MASK, "C", nullptr);
};

const Locales& locales() {
    static const Locales made;
    return made;
}

std::string hexadecimal(std::uint32_t number) {
    std::string digits;
    for (int shift = 28; shift >= 0; shift -= 4) digits += "0123456789abcdef"[number >> shift & 0xF];
    return digits;
}

std::string levelName(int level) {
    switch (level) {
        case 0:
            return "Off  ";
        case 1:
            return "Error";
        case 2:
            return "Info ";
        case 3:
            return "Debug";
        case 4:
            return "Trace";
        default:
            return "";
    }
}

bool isDigits(const std::string& text) {
    return text.find_first_not_of("0123456789") == std::string::npos;
}

// Not std::time, which lags behind the clock that the line's time is taken from.
std::time_t presentMoment() {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    return now.tv_sec;
}

std::string localSeconds(std::time_t moment) {
    struct tm local {};
    localtime_r(&moment, &local);
    char text[64];
    require(std::strftime(text, sizeof text, "%d/%m/%Y %H:%M:%S.", &local) == 20, "a time has 20 characters");
    return text;
}

// The line's time, as long as it lies between the two moments.
std::string timeOf(const std::string& line, std::time_t earliest, std::time_t latest) {
    const std::string seconds = line.substr(0, 20);
    const std::string milliseconds = line.substr(seconds.size(), 3);
    require(milliseconds.size() == 3 && isDigits(milliseconds), "the milliseconds are three digits");
    for (std::time_t moment = earliest; moment <= latest; ++moment) {
        if (localSeconds(moment) == seconds) return seconds + milliseconds;
    }
    fail("the time of the line, " + seconds + ", is not the present");
}

// One call, and the text that its line must carry: none where it must be dropped.
struct Call {
    int level = 0;
    std::optional<std::string> text;
};

void compare(const Call& call, std::time_t earliest) {
    const std::string contents = logFile().take();
    if (call.level > LOG_TRACE || !call.text) {
        requireSame(contents, "", "the log after a call that is dropped");
        return;
    }
    const std::string expected = timeOf(contents, earliest, presentMoment()) + "\tP[" +
                                 hexadecimal(static_cast<std::uint32_t>(getpid())) + "] T[" +
                                 hexadecimal(static_cast<std::uint32_t>(pthread_self())) + "]\t" +
                                 levelName(call.level) + '\t' + *call.text + '\n';
    requireSame(contents, expected, "the line");
}

// The characters before the first NUL, which is all that a C string has.
std::string shown(const std::string& text) {
    return text.c_str();
}

std::string padded(const std::string& text, int width) {
    const auto room = static_cast<std::size_t>(std::abs(width));
    const std::string blanks(room > text.size() ? room - text.size() : 0, ' ');
    return width < 0 ? text + blanks : blanks + text;
}

Call callLog(Input& input, LOG_LEVEL level) {
    const unsigned form = input.choice(7);
    const auto number = static_cast<int>(input.number32());
    const auto width = static_cast<std::int16_t>(number);
    const std::string a = input.longText();
    const std::string b = input.text();
    std::string expected;
    switch (form) {
        case 0:
            Log(level, "%s", a.c_str());
            expected = shown(a);
            break;
        case 1:
            Log(level, "SensorProvider::getInstance - Object path: class = %s, namespace = %s", a.c_str(), b.c_str());
            expected = "SensorProvider::getInstance - Object path: class = " + shown(a) + ", namespace = " + shown(b);
            break;
        case 2:
            Log(level, "%s%d%s\n", a.c_str(), number, b.c_str());
            expected = shown(a) + std::to_string(number) + shown(b) + "\n";
            break;
        case 3:
            Log(level, "%s - sscode=0x%08x", a.c_str(), static_cast<unsigned>(number));
            expected = shown(a) + " - sscode=0x" + hexadecimal(static_cast<std::uint32_t>(number));
            break;
        case 4:
            Log(level, "%.*s%ld", std::abs(int{width}), a.c_str(), static_cast<long>(number));
            expected = shown(a).substr(0, static_cast<std::size_t>(std::abs(int{width}))) + std::to_string(number);
            break;
        case 5:
            Log(level, "%*s", int{width}, a.c_str());
            expected = padded(shown(a), width);
            break;
        default:
            Log(level, "100%%");
            expected = "100%";
            break;
    }
    return {level, expected.substr(0, LONGEST)};
}

Call callLogQuick(Input& input, LOG_LEVEL level) {
    if (input.choice(16) == 15) {
        LogQuick(level, nullptr);
        return {level, std::nullopt};
    }
    const std::string text = input.longText();
    LogQuick(level, text.c_str());
    return {level, shown(text)};
}

std::wstring wideText(Input& input) {
    std::wstring unit;
    const unsigned size = input.choice(16);
    // Mostly characters that every locale, or UTF-8, has; the rest is anything.
    const bool isAnything = input.choice(8) == 7;
    for (unsigned i = 0; i < size; ++i) {
        unit += isAnything ? static_cast<wchar_t>(input.number32()) : static_cast<wchar_t>(input.number16() & 0x7FF);
    }
    std::wstring text;
    for (unsigned left = input.number16() % 1500; left > 0; --left) text += unit;
    return text + unit;
}

// Character by character. Nothing where a character that is reached cannot be converted.
std::optional<std::string> narrowed(const std::wstring& wide) {
    constexpr std::size_t room = LONGEST + 1;
    std::string text;
    std::size_t lastSize = 0;
    for (const wchar_t character : wide.substr(0, LONGEST)) {
        char bytes[MB_LEN_MAX];
        std::mbstate_t state{};
        if (text.size() == room) break;
        const std::size_t size = std::wcrtomb(bytes, character, &state);
        if (size == static_cast<std::size_t>(-1)) return std::nullopt;
        if (text.size() + size > room) break;
        text.append(bytes, size);
        lastSize = size;
    }
    if (text.size() == room) text.resize(room - lastSize);
    return text;
}

std::optional<std::wstring> widened(const std::string& text) {
    std::wstring wide;
    std::mbstate_t state{};
    for (std::size_t i = 0; i < text.size();) {
        wchar_t character = 0;
        const std::size_t size = std::mbrtowc(&character, text.data() + i, text.size() - i, &state);
        if (size == static_cast<std::size_t>(-1) || size == static_cast<std::size_t>(-2)) return std::nullopt;
        wide += character;
        i += size;
    }
    return wide;
}

Call callWLog(Input& input, LOG_LEVEL level) {
    const unsigned form = input.choice(4);
    const auto number = static_cast<int>(input.number32());
    std::optional<std::wstring> wide;
    switch (form) {
        case 0:
            wide = wideText(input).c_str();
            WLog(level, L"%ls", wide->c_str());
            break;
        case 1:
            wide = wideText(input).c_str();
            WLog(level, L"%d-%ls", number, wide->c_str());
            wide = std::to_wstring(number) + L"-" + *wide;
            break;
        case 2: {
            const std::string text = input.longText();
            WLog(level, L"%s", text.c_str());
            wide = widened(shown(text));
            break;
        }
        default:
            WLog(level, nullptr);
            break;
    }
    return {level, wide ? narrowed(*wide) : std::nullopt};
}

void callOnce(Input& input) {
    const unsigned kind = input.byte();
    uselocale((kind & 0x80) != 0 ? locales().plain : locales().utf8);
    auto level = static_cast<LOG_LEVEL>(input.choice(6));
    if (level > LOG_TRACE) level = static_cast<LOG_LEVEL>(static_cast<int>(input.number32()));
    const std::time_t earliest = presentMoment();
    switch (kind % 3) {
        case 0:
            compare(callLog(input, level), earliest);
            break;
        case 1:
            compare(callWLog(input, level), earliest);
            break;
        default:
            compare(callLogQuick(input, level), earliest);
            break;
    }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
    setenv("TZ", "NST3:30NDT,M3.2.0,M11.1.0", 1);
    tzset();
    require(locales().utf8 != nullptr, "the locale C.UTF-8 is there");
    configuration::setLogFile("Level=4\nMaxLength=-1\nFileName=" + logFile().path() + "\n");
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    CapturedStreams streams;
    for (unsigned call = 0; call < MOST_CALLS && !input.isEmpty(); ++call) callOnce(input);
    uselocale(LC_GLOBAL_LOCALE);
    return 0;
}
