#include "LibSensors.h"

#include <dlfcn.h>

#include <array>
#include <csetjmp>
#include <cstdlib>
#include <mutex>
#include <new>

namespace {

constexpr char MODULE[] = "$ORIGIN/zelsensors-linux/privatecopy.so";  // beside this library; the loader expands it

// libsensors's hook knows nothing of its caller. It may not return, and the private copy cannot be unwound.
std::mutex s_searching;
std::jmp_buf* s_wayOut = nullptr;
Survey* s_survey = nullptr;

void leave(const char*, const char*) {
    std::longjmp(*s_wayOut, 1);
}

void noteMistake(const char* text, const char* file, int line) {
    if (s_survey == nullptr) return;
    try {
        s_survey->mistakes.push_back({file == nullptr ? "" : file, line, text});
    } catch (const std::bad_alloc&) {
        // libsensors cannot be unwound; the search itself will be short of memory, and say so.
    }
}

// No object with a destructor may be here or in what is called.
[[gnu::noinline]] bool returns(void (*call)(void*), void* argument) {
    std::jmp_buf here;
    s_wayOut = &here;
    const bool isFirst = setjmp(here) == 0;
    if (isFirst) call(argument);
    s_wayOut = nullptr;
    return isFirst;
}

}  // namespace

template <typename Call>
bool LibSensors::survives(Call call) {
    if (!m_gaveUp) m_gaveUp = !returns([](void* argument) { (*static_cast<Call*>(argument))(); }, &call);
    return !m_gaveUp;
}

std::unique_ptr<LibSensors> LibSensors::load() {
    std::unique_ptr<LibSensors> sensors(new (std::nothrow) LibSensors);
    if (sensors != nullptr && !sensors->open()) sensors.reset();
    return sensors;
}

bool LibSensors::open() {
    m_library = dlmopen(LM_ID_NEWLM, MODULE, RTLD_NOW | RTLD_LOCAL);
    if (m_library == nullptr || !findFunctions()) return false;
    m_functions.useMemory(m_memory.functions());
    return setHooks();
}

template <typename Function>
bool LibSensors::findFunction(const char* name, Function& function) {
    function = reinterpret_cast<Function>(dlsym(m_library, name));
    return function != nullptr;
}

bool LibSensors::findFunctions() {
    Functions& all = m_functions;
    return findFunction("privateCopyUseMemory", all.useMemory) && findFunction("privateCopyWatch", all.watch) &&
           findFunction("privateCopyEndWatch", all.endWatch) &&
           findFunction("privateCopyEnterThread", all.enterThread) && findFunction("free", all.free) &&
           findFunction("sensors_init", all.init) && findFunction("sensors_cleanup", all.cleanUp) &&
           findFunction("sensors_get_detected_chips", all.getDetectedChips) &&
           findFunction("sensors_get_features", all.getFeatures) &&
           findFunction("sensors_get_subfeature", all.getSubfeature) &&
           findFunction("sensors_get_label", all.getLabel) &&
           findFunction("sensors_get_adapter_name", all.getAdapterName) &&
           findFunction("sensors_get_value", all.getValue) &&
           findFunction("sensors_snprintf_chip_name", all.printName) && findFunction("sensors_strerror", all.describe);
}

bool LibSensors::setHooks() {
    const auto fatal = static_cast<decltype(&sensors_fatal_error)>(dlsym(m_library, "sensors_fatal_error"));
    const auto mistake = static_cast<decltype(&sensors_parse_error_wfn)>(dlsym(m_library, "sensors_parse_error_wfn"));
    if (fatal == nullptr || mistake == nullptr) return false;
    *fatal = leave;
    *mistake = noteMistake;
    return true;
}

LibSensors::~LibSensors() {
    if (m_library != nullptr) dlclose(m_library);
}

LibSensors::Search::Search(LibSensors& sensors, Survey* survey) : m_sensors(sensors) {
    s_searching.lock();
    s_survey = survey;
    const void* version = dlsym(m_sensors.m_library, "libsensors_version");
    if (survey != nullptr && version != nullptr) survey->version = *static_cast<const char* const*>(version);
    const Functions& functions = m_sensors.m_functions;
    functions.enterThread();
    functions.watch();
    m_sensors.m_memory.track();
    functions.cleanUp();
    m_sensors.survives([&] { m_status = functions.init(nullptr); });
}

bool LibSensors::Search::areSettingsAtFault() const {
    return m_status == -SENSORS_ERR_BUS_NAME || m_status == -SENSORS_ERR_PARSE;
}

LibSensors::Search::~Search() {
    s_survey = nullptr;
    m_sensors.m_functions.endWatch();
    m_sensors.m_memory.endTracking();
    s_searching.unlock();
}

bool LibSensors::Search::end() {
    const bool hadDescriptors = m_sensors.m_functions.endWatch() == 0;
    m_sensors.m_memory.endTracking();
    return hadDescriptors && !m_sensors.wasShort() && !m_sensors.m_gaveUp;
}

const sensors_chip_name* LibSensors::Search::nextChip(int& number) const {
    return m_sensors.m_functions.getDetectedChips(nullptr, &number);
}

const sensors_feature* LibSensors::Search::nextFeature(const sensors_chip_name& chip, int& number) const {
    return m_sensors.m_functions.getFeatures(&chip, &number);
}

std::optional<int> LibSensors::Search::find(const sensors_chip_name& chip, const sensors_feature& feature,
                                            sensors_subfeature_type type) const {
    if (type == SENSORS_SUBFEATURE_UNKNOWN) return std::nullopt;
    const sensors_subfeature* found = m_sensors.m_functions.getSubfeature(&chip, &feature, type);
    return found == nullptr ? std::nullopt : std::optional<int>(found->number);
}

std::string LibSensors::Search::label(const sensors_chip_name& chip, const sensors_feature& feature) const {
    char* text = nullptr;
    m_sensors.survives([&] { text = m_sensors.m_functions.getLabel(&chip, &feature); });
    const std::unique_ptr<char, decltype(&std::free)> owner(text, m_sensors.m_functions.free);
    return text == nullptr ? feature.name : text;
}

std::string LibSensors::Search::adapterOf(const sensors_chip_name& chip) const {
    const char* name = m_sensors.m_functions.getAdapterName(&chip.bus);
    return name == nullptr ? "" : name;
}

std::string LibSensors::Search::nameOf(const sensors_chip_name& chip) const {
    std::array<char, 256> name{};
    m_sensors.m_functions.printName(name.data(), name.size(), &chip);
    return name.data();
}

int LibSensors::getValue(const sensors_chip_name& chip, const std::string& directory, int subfeature,
                         double& value) const {
    m_functions.enterThread();
    sensors_chip_name there = chip;
    there.path = const_cast<char*>(directory.c_str());  // which libsensors only reads
    return m_functions.getValue(&there, subfeature, &value);
}

std::optional<double> LibSensors::read(const sensors_chip_name& chip, const std::string& directory,
                                       int subfeature) const {
    double value = 0;
    if (getValue(chip, directory, subfeature, value) != 0) return std::nullopt;
    return value;
}

std::string LibSensors::whyUnread(const sensors_chip_name& chip, const std::string& directory, int subfeature) const {
    double value = 0;
    const int status = getValue(chip, directory, subfeature, value);
    return status == 0 ? "" : m_functions.describe(status);
}
