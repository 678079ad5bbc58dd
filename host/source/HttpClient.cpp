#include "source/HttpClient.h"

#include <curl/curl.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cerrno>
#include <cstring>
#include <string_view>
#include <utility>

#include "text/Utf8.h"

namespace host {
namespace {

// A server that never ends its headers shall not fill the memory.
constexpr std::size_t MOST_HEADER_BYTES = std::size_t{1} << 20;

constexpr const char* NOTHING_CAME = "ended the connection without an answer; does this port want https?";

bool isSameWord(std::string_view left, std::string_view right) {
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](unsigned char l, unsigned char r) { return std::tolower(l) == std::tolower(r); });
}

std::string_view withoutBlanks(std::string_view text) {
    constexpr const char* blanks = " \t\r\n";
    text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
    return text.substr(0, text.find_last_not_of(blanks) + 1);
}

// What has come so far.
struct Receipt {
    HttpAnswer answer;
    std::size_t headerBytes = 0;
    bool isTooLong = false;
};

std::size_t takeBody(const char* data, std::size_t, std::size_t count, void* user) {
    auto& receipt = *static_cast<Receipt*>(user);
    if (receipt.answer.body.size() + count > HttpClient::LARGEST_BODY) {
        receipt.isTooLong = true;
        return 0;
    }
    receipt.answer.body.append(data, count);
    return count;
}

std::size_t takeHeader(const char* data, std::size_t, std::size_t count, void* user) {
    auto& receipt = *static_cast<Receipt*>(user);
    const std::string_view line(data, count);
    receipt.headerBytes += count;
    if (receipt.headerBytes > MOST_HEADER_BYTES) {
        receipt.isTooLong = true;
        return 0;
    }
    if (line.rfind("HTTP/", 0) == 0) {
        receipt.answer.headers.clear();  // an interim answer, such as 100, came before
        return count;
    }
    const std::size_t colon = line.find(':');
    if (colon == std::string_view::npos) return count;
    receipt.answer.headers.push_back(
        {std::string(withoutBlanks(line.substr(0, colon))), std::string(withoutBlanks(line.substr(colon + 1)))});
    return count;
}

void startCurl() {
    static const CURLcode code = curl_global_init(CURL_GLOBAL_DEFAULT);
    if (code != CURLE_OK) throw ServerError(std::string("HTTP is not available: ") + curl_easy_strerror(code));
}

struct ListCloser {
    void operator()(curl_slist* list) const { curl_slist_free_all(list); }
};
using List = std::unique_ptr<curl_slist, ListCloser>;

List listOf(const std::vector<std::string>& lines) {
    List list;
    for (const std::string& line : lines) {
        curl_slist* longer = curl_slist_append(list.get(), line.c_str());
        if (longer == nullptr) throw std::bad_alloc();
        static_cast<void>(list.release());  // it is in the longer one
        list.reset(longer);
    }
    return list;
}

std::string secondsText(std::chrono::milliseconds time) {
    std::string text = std::to_string(time.count() / 1000);
    if (const auto rest = time.count() % 1000; rest != 0) {
        std::string digits = std::to_string(1000 + rest).substr(1);
        digits.erase(digits.find_last_not_of('0') + 1);
        text += '.' + digits;
    }
    return text + " s";
}

}  // namespace

std::string HttpAnswer::header(const std::string& name) const {
    const auto found = std::find_if(headers.rbegin(), headers.rend(),
                                    [&name](const Header& each) { return isSameWord(each.name, name); });
    return found == headers.rend() ? "" : found->value;
}

struct HttpClient::Handle {
    Handle() : curl(curl_easy_init()) {
        if (curl == nullptr) throw ServerError("HTTP is not available");
    }
    ~Handle() { curl_easy_cleanup(curl); }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;

    template <typename Setting>
    void set(CURLoption option, Setting setting) const {
        const CURLcode code = curl_easy_setopt(curl, option, setting);
        if (code != CURLE_OK) throw ServerError(std::string("HTTP cannot be set up: ") + curl_easy_strerror(code));
    }
    template <typename Number>
    Number number(CURLINFO what) const {
        Number value = 0;
        curl_easy_getinfo(curl, what, &value);
        return value;
    }

    // Why no whole answer came.
    std::string reason(CURLcode code, const ServerAccess& access, const Receipt& receipt) const;
    std::string timeoutReason(const ServerAccess& access) const;
    std::string certificateReason(const ServerAccess& access) const;
    std::string connectionReason() const;

    CURL* curl;
    std::array<char, CURL_ERROR_SIZE> message{};
};

std::string HttpClient::Handle::timeoutReason(const ServerAccess& access) const {
    const std::string time = secondsText(access.timeout);
    if (number<curl_off_t>(CURLINFO_CONNECT_TIME_T) > 0) {
        return "gave no whole answer within " + time + "; --timeout gives it longer";
    }
    return "could not be reached within " + time +
           "; is the machine on, and does every firewall between let this port through?";
}

std::string HttpClient::Handle::certificateReason(const ServerAccess& access) const {
    const std::string hint = access.caFile.empty() ? "; --ca names a file with the certificates to trust"
                                                   : "; it was checked against " + printable(access.caFile);
    return "has a certificate that is not trusted (" + printable(message.data()) + ')' + hint;
}

std::string HttpClient::Handle::connectionReason() const {
    const auto error = static_cast<int>(number<long>(CURLINFO_OS_ERRNO));
    if (error == ECONNREFUSED) {
        return "refuses the connection; is the object manager running, and does it listen on this port?";
    }
    const std::string cause = error == 0 ? "" : std::string(" (") + std::strerror(error) + ')';
    return "cannot be reached" + cause + "; is the machine on, and does the network lead there?";
}

std::string HttpClient::Handle::reason(CURLcode code, const ServerAccess& access, const Receipt& receipt) const {
    if (receipt.isTooLong) return "sends more than an answer can be (32 MiB, or 1 MiB of headers)";
    switch (code) {
        case CURLE_COULDNT_RESOLVE_HOST:
            return "has a name that is not known here; is it spelled right, and does the name service know it?";
        case CURLE_COULDNT_CONNECT:
            return connectionReason();
        case CURLE_OPERATION_TIMEDOUT:
            return timeoutReason(access);
        case CURLE_PEER_FAILED_VERIFICATION:
            return certificateReason(access);
        case CURLE_SSL_CACERT_BADFILE:
            return "is not asked: " + printable(access.caFile) + " holds no certificates that can be read";
        case CURLE_SSL_CONNECT_ERROR:
            return "does not speak TLS here (" + printable(message.data()) +
                   "); is this the port for https, and not that for http?";
        case CURLE_GOT_NOTHING:
            return NOTHING_CAME;
        case CURLE_RECV_ERROR:
            if (receipt.headerBytes == 0) return NOTHING_CAME;
            return "broke its answer off";
        case CURLE_PARTIAL_FILE:
            return "broke its answer off";
        case CURLE_WEIRD_SERVER_REPLY:
        case CURLE_UNSUPPORTED_PROTOCOL:
            return "does not answer in HTTP; is this the port of an object manager?";
        default:
            return std::string("gave no answer: ") +
                   printable(message[0] != '\0' ? message.data() : curl_easy_strerror(code));
    }
}

HttpClient::HttpClient(const ServerAccess& access) : m_access(access) {
    startCurl();
    m_handle = std::make_unique<Handle>();
    const Handle& handle = *m_handle;
    handle.set(CURLOPT_NOSIGNAL, 1L);
    handle.set(CURLOPT_ERRORBUFFER, m_handle->message.data());
    handle.set(CURLOPT_WRITEFUNCTION, takeBody);
    handle.set(CURLOPT_HEADERFUNCTION, takeHeader);
    const long milliseconds = access.timeout.count();
    handle.set(CURLOPT_TIMEOUT_MS, milliseconds);
    handle.set(CURLOPT_CONNECTTIMEOUT_MS, milliseconds);
    handle.set(CURLOPT_PROTOCOLS_STR, "http,https");
    handle.set(CURLOPT_PROXY, "");
    if (!access.user.empty()) {
        handle.set(CURLOPT_HTTPAUTH, CURLAUTH_BASIC);
        handle.set(CURLOPT_USERNAME, access.user.c_str());
        handle.set(CURLOPT_PASSWORD, access.password.c_str());
    }
    handle.set(CURLOPT_SSL_VERIFYPEER, access.checksCertificate ? 1L : 0L);
    handle.set(CURLOPT_SSL_VERIFYHOST, access.checksCertificate ? 2L : 0L);
    if (!access.caFile.empty()) {
        handle.set(CURLOPT_CAINFO, access.caFile.c_str());
        handle.set(CURLOPT_CAPATH, static_cast<const char*>(nullptr));
    }
}

HttpClient::~HttpClient() = default;

HttpAnswer HttpClient::post(const std::string& path, const std::vector<std::string>& headers, const std::string& body) {
    const List list = listOf(headers);
    Receipt receipt;
    m_handle->message[0] = '\0';
    m_handle->set(CURLOPT_URL, (m_access.url + path).c_str());
    m_handle->set(CURLOPT_HTTPHEADER, list.get());
    m_handle->set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(body.size()));
    m_handle->set(CURLOPT_POSTFIELDS, body.data());
    m_handle->set(CURLOPT_WRITEDATA, &receipt);
    m_handle->set(CURLOPT_HEADERDATA, &receipt);
    const CURLcode code = curl_easy_perform(m_handle->curl);
    if (code != CURLE_OK) throw ServerError(m_access.url + ' ' + m_handle->reason(code, m_access, receipt));
    receipt.answer.status = m_handle->number<long>(CURLINFO_RESPONSE_CODE);
    return std::move(receipt.answer);
}

std::string percentEncoded(const std::string& text) {
    static constexpr char digits[] = "0123456789ABCDEF";
    std::string result;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x80 && (std::isalnum(byte) != 0 || std::strchr("-._~", c) != nullptr) && byte != 0) {
            result += c;
        } else {
            result += {'%', digits[byte >> 4], digits[byte & 0x0f]};
        }
    }
    return result;
}

std::string percentDecoded(const std::string& text) {
    const auto digitOf = [](char c) {
        if (c >= '0' && c <= '9') return c - '0';
        if (c >= 'a' && c <= 'f') return c - 'a' + 10;
        if (c >= 'A' && c <= 'F') return c - 'A' + 10;
        return -1;
    };
    std::string result;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const bool isCode = text[at] == '%' && at + 2 < text.size();
        const int high = isCode ? digitOf(text[at + 1]) : -1;
        const int low = isCode ? digitOf(text[at + 2]) : -1;
        if (high < 0 || low < 0) {
            result += text[at];
        } else {
            result += static_cast<char>(high * 16 + low);
            at += 2;
        }
    }
    return result;
}

}  // namespace host
