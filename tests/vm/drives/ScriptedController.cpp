// An NVMe controller whose answers are scripted, as the kernel's NVMe/TCP driver meets it: the guest connects to it on
// its own loopback. It has an admin queue only, and serves one connection at a time.
//
//     scripted_controller PORT DIRECTORY
//
// It goes into the background once connections can be made. DIRECTORY/behaviour holds lines KEY=NUMBER and is read anew
// for each command; DIRECTORY/commands receives a line for each command of the driver or of its users. A command is
// called controller, namespace (the two Identify commands), under, over (the two thresholds), health or other. The
// keys:
//
//     temperature         in Kelvin, as it stands in the health page
//     under, over         the thresholds' completion dword 0
//     namespaces          Number of Namespaces
//     status-COMMAND      the command is refused with this status (as the ioctl returns it: with more and retry bits)
//     result-COMMAND      its completion dword 0
//     silent-COMMAND      1: it is never answered
//     drop-COMMAND        1: the connection is closed instead
//     closed              1: the connection is closed now
//     unreachable         1: new connections are closed at once
//
// Layouts: NVM Express Base Specification, and the NVMe/TCP Transport Specification.
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>
#include <string>
#include <vector>

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::uint8_t ICREQ = 0;
constexpr std::uint8_t ICRESP = 1;
constexpr std::uint8_t COMMAND_CAPSULE = 4;
constexpr std::uint8_t RESPONSE_CAPSULE = 5;
constexpr std::uint8_t DATA_TO_HOST = 7;
constexpr std::uint8_t LAST_DATA = 0x04;

constexpr std::uint8_t GET_LOG_PAGE = 0x02;
constexpr std::uint8_t IDENTIFY = 0x06;
constexpr std::uint8_t GET_FEATURES = 0x0A;
constexpr std::uint8_t ASYNC_EVENT_REQUEST = 0x0C;
constexpr std::uint8_t KEEP_ALIVE = 0x18;
constexpr std::uint8_t FABRICS = 0x7F;
constexpr std::uint8_t PROPERTY_SET = 0x00;
constexpr std::uint8_t CONNECT = 0x01;
constexpr std::uint8_t PROPERTY_GET = 0x04;

std::uint64_t number(const Bytes& bytes, std::size_t offset, unsigned size) {
    std::uint64_t value = 0;
    for (unsigned i = size; i > 0; --i) value = value << 8U | bytes.at(offset + i - 1);
    return value;
}

void put(Bytes& bytes, std::size_t offset, unsigned size, std::uint64_t value) {
    for (unsigned i = 0; i < size; ++i) bytes.at(offset + i) = static_cast<std::uint8_t>(value >> (8 * i) & 0xFFU);
}

void putText(Bytes& bytes, std::size_t offset, std::size_t size, const std::string& text) {
    for (std::size_t i = 0; i < size; ++i)
        bytes.at(offset + i) = i < text.size() ? static_cast<std::uint8_t>(text[i]) : std::uint8_t{' '};
}

struct Closed {};  // thrown when the connection is at its end

class Connection {
  public:
    explicit Connection(int socket) : m_socket(socket) {}
    ~Connection() { close(m_socket); }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    // Whether something has arrived; waits a moment for it.
    bool hasInput() const {
        pollfd wanted{m_socket, POLLIN, 0};
        return poll(&wanted, 1, 20) > 0;
    }

    // One protocol data unit: its header of 8 bytes, and the rest.
    Bytes receive() const {
        Bytes unit(8);
        receiveInto(unit, 0);
        unit.resize(number(unit, 4, 4));
        receiveInto(unit, 8);
        return unit;
    }

    void send(const Bytes& unit) const {
        if (::send(m_socket, unit.data(), unit.size(), MSG_NOSIGNAL) != static_cast<ssize_t>(unit.size()))
            throw Closed{};
    }

  private:
    void receiveInto(Bytes& unit, std::size_t from) const {
        while (from < unit.size()) {
            const ssize_t count = recv(m_socket, &unit[from], unit.size() - from, 0);
            if (count <= 0) throw Closed{};
            from += static_cast<std::size_t>(count);
        }
    }

    int m_socket;
};

Bytes makeUnit(std::uint8_t type, std::uint8_t flags, std::uint8_t headerSize, std::size_t size) {
    Bytes unit(size);
    unit[0] = type;
    unit[1] = flags;
    unit[2] = headerSize;
    put(unit, 4, 4, size);
    return unit;
}

class Controller {
  public:
    Controller(unsigned port, std::string directory) : m_port(port), m_directory(std::move(directory)) {}

    void serve(int socket) {
        const Connection connection(socket);
        readBehaviour();
        if (behaviour("unreachable") == 1) return;
        m_configuration = 0;
        if (connection.receive()[0] != ICREQ) return;
        Bytes answer = makeUnit(ICRESP, 0, 128, 128);
        put(answer, 12, 4, 0x20000);  // MAXH2CDATA
        connection.send(answer);
        while (behaviour("closed") != 1) {
            const bool hasInput = connection.hasInput();
            readBehaviour();
            if (!hasInput) continue;
            const Bytes unit = connection.receive();
            if (unit[0] == COMMAND_CAPSULE) execute(connection, Bytes(unit.begin() + 8, unit.end()));
        }
    }

  private:
    void readBehaviour() {
        m_behaviour.clear();
        std::ifstream file(m_directory + "/behaviour");
        for (std::string line; std::getline(file, line);) {
            const std::size_t middle = line.find('=');
            if (middle != std::string::npos)
                m_behaviour[line.substr(0, middle)] = std::strtoull(line.c_str() + middle + 1, nullptr, 0);
        }
    }

    std::uint64_t behaviour(const std::string& key, std::uint64_t otherwise = 0) const {
        const auto found = m_behaviour.find(key);
        return found == m_behaviour.end() ? otherwise : found->second;
    }

    void execute(const Connection& connection, const Bytes& command) {
        if (command[0] == ASYNC_EVENT_REQUEST) return;  // no event ever comes
        if (command[0] == FABRICS) {
            respond(connection, command, executeFabrics(command), 0);
            return;
        }
        if (command[0] == KEEP_ALIVE) {
            respond(connection, command, 0, 0);
            return;
        }
        record(command);
        const std::string name = nameOf(command);
        if (behaviour("drop-" + name) == 1) throw Closed{};
        if (behaviour("silent-" + name) == 1) return;
        const std::uint64_t status = behaviour("status-" + name);
        if (status == 0) sendData(connection, command, dataFor(name, command));
        respond(connection, command, behaviour("result-" + name, resultOf(name)), status);
    }

    static std::string nameOf(const Bytes& command) {
        const std::uint64_t dword10 = number(command, 40, 4);
        if (command[0] == IDENTIFY && (dword10 & 0xFF) == 1) return "controller";
        if (command[0] == IDENTIFY && (dword10 & 0xFF) == 0) return "namespace";
        if (command[0] == GET_FEATURES && (dword10 & 0xFF) == 4) return number(command, 44, 4) == 0 ? "over" : "under";
        if (command[0] == GET_LOG_PAGE && (dword10 & 0xFF) == 2) return "health";
        return "other";
    }

    // "opcode 06 nsid 00000000 cdw10 00000001 cdw11 00000000 length 4096", and the other dwords where they are not 0.
    void record(const Bytes& command) const {
        const auto dword = [&command](unsigned index) { return static_cast<unsigned>(number(command, 4U * index, 4)); };
        std::array<char, 128> text{};
        std::snprintf(text.data(), text.size(), "opcode %02x nsid %08x cdw10 %08x cdw11 %08x length %u",
                      dword(0) & 0xFF, dword(1), dword(10), dword(11), dword(8));
        std::string line = text.data();
        for (const unsigned index : {2U, 3U, 12U, 13U, 14U, 15U}) {
            if (dword(index) != 0) line += " cdw" + std::to_string(index) + " " + std::to_string(dword(index));
        }
        std::ofstream(m_directory + "/commands", std::ios::app) << line << '\n';
    }

    std::uint64_t resultOf(const std::string& name) const {
        if (name == "under") return behaviour("under", 258);
        if (name == "over") return behaviour("over", 358);
        return 0;
    }

    Bytes dataFor(const std::string& name, const Bytes& command) const {
        Bytes data(number(command, 32, 4));
        if (name == "controller" && data.size() == 4096) fillIdentity(data);
        if (name == "health" && data.size() == 512) put(data, 1, 2, behaviour("temperature", 301));
        return data;
    }

    void fillIdentity(Bytes& data) const {
        putText(data, 4, 20, "SCRIPT" + std::to_string(m_port));
        putText(data, 24, 40, "Scripted drive");
        putText(data, 64, 8, "1.0");
        put(data, 78, 2, 1);           // controller id
        put(data, 80, 4, 0x00010300);  // version 1.3
        data[111] = 2;                 // a discovery controller, which has no I/O queues
        put(data, 320, 2, 10);         // keep-alive in units of 100 ms
        data[512] = 0x66;              // queue entries of 64 and
        data[513] = 0x44;              // 16 bytes
        put(data, 514, 2, 32);         // commands at a time
        put(data, 516, 4, behaviour("namespaces", 1));
        put(data, 536, 4, 1);  // scatter-gather lists
        putText(data, 768, 256, "");
        const std::string name = "nqn.2014-08.org.nvmexpress.discovery";
        std::memcpy(&data[768], name.c_str(), name.size() + 1);
    }

    std::uint64_t executeFabrics(const Bytes& command) {
        const std::uint64_t property = number(command, 44, 4);
        switch (command[4]) {
            case CONNECT:
                return 1;  // controller id
            case PROPERTY_SET:
                if (property == 0x14) m_configuration = number(command, 48, 8);
                return 0;
            case PROPERTY_GET:
                if (property == 0x00) return 1ULL << 37 | 20ULL << 24 | 1ULL << 16 | 31;  // capabilities
                if (property == 0x08) return 0x00010300;                                  // version
                if (property == 0x14) return m_configuration;
                if (property == 0x1C) return (m_configuration & 1) | ((m_configuration & 0xC000) != 0 ? 8 : 0);
                return 0;
            default:
                return 0;
        }
    }

    static void sendData(const Connection& connection, const Bytes& command, const Bytes& data) {
        if (data.empty()) return;
        Bytes unit = makeUnit(DATA_TO_HOST, LAST_DATA, 24, 24);
        unit[3] = 24;  // where the data begins
        put(unit, 4, 4, 24 + data.size());
        put(unit, 8, 2, number(command, 2, 2));
        put(unit, 16, 4, data.size());
        unit.insert(unit.end(), data.begin(), data.end());
        connection.send(unit);
    }

    static void respond(const Connection& connection, const Bytes& command, std::uint64_t result,
                        std::uint64_t status) {
        Bytes unit = makeUnit(RESPONSE_CAPSULE, 0, 24, 24);
        put(unit, 8, 8, result);
        put(unit, 20, 2, number(command, 2, 2));
        put(unit, 22, 2, status << 1);
        connection.send(unit);
    }

    unsigned m_port;
    std::string m_directory;
    std::map<std::string, std::uint64_t> m_behaviour;
    std::uint64_t m_configuration = 0;
};

int listenAt(unsigned port) {
    const int listening = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const int yes = 1;
    setsockopt(listening, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (bind(listening, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        listen(listening, 4) != 0) {
        std::perror("scripted_controller");
        std::exit(EXIT_FAILURE);
    }
    return listening;
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 3) return EXIT_FAILURE;
    const auto port = static_cast<unsigned>(std::strtoul(arguments[1], nullptr, 10));
    Controller controller(port, arguments[2]);
    const int listening = listenAt(port);
    if (daemon(0, 0) != 0) return EXIT_FAILURE;
    while (true) {
        const int socket = accept4(listening, nullptr, nullptr, SOCK_CLOEXEC);
        if (socket < 0) return EXIT_FAILURE;
        try {
            controller.serve(socket);
        } catch (const Closed&) {
            continue;
        }
    }
}
