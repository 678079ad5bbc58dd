// A copy of libsensors that is this object's alone. libsensors has one state for a whole process, so that two users in
// one process would empty or double each other's lists; it sets the process's locale for a while, writes to standard
// error, and ends the process when memory is out. The copy lives in a name space of its own (private/PrivateCopy.h).
//
// What libsensors says about mistakes in the machine's sensors3.conf is thrown away, unless somebody makes a survey.
#ifndef ZELSENSORS_CHIPLINUX_LIBSENSORS_H
#define ZELSENSORS_CHIPLINUX_LIBSENSORS_H

#include <sensors/error.h>
#include <sensors/sensors.h>

#include <memory>
#include <optional>
#include <string>

#include "Survey.h"
#include "TrackedMemory.h"

class LibSensors {
  public:
    // Null where the library cannot be loaded, also for want of memory.
    static std::unique_ptr<LibSensors> load();
    ~LibSensors();
    LibSensors(const LibSensors&) = delete;
    LibSensors& operator=(const LibSensors&) = delete;

    // A stretch of calls that look for chips; one thread at a time, with no reader meanwhile. After a failure the whole
    // object is only good to be destroyed.
    class Search {
      public:
        // Looks for the machine's chips anew. All pointers that were given before are void. The survey, if there is
        // one, gets libsensors's version and the mistakes in its settings.
        explicit Search(LibSensors& sensors, Survey* survey = nullptr);
        ~Search();
        Search(const Search&) = delete;
        Search& operator=(const Search&) = delete;

        // Whether libsensors could read its settings and the kernel's list. Most mistakes in the settings cost their
        // own block alone, but some, such as a bus that is not declared, are refused with all the rest.
        bool hasList() const { return m_status == 0; }
        bool areSettingsAtFault() const;
        // Each null when there is no further one. The number is 0 at first, and libsensors's own afterwards.
        const sensors_chip_name* nextChip(int& number) const;
        const sensors_feature* nextFeature(const sensors_chip_name& chip, int& number) const;
        // Empty where there is none, or no such type at all (SENSORS_SUBFEATURE_UNKNOWN).
        std::optional<int> find(const sensors_chip_name& chip, const sensors_feature& feature,
                                sensors_subfeature_type type) const;
        std::string label(const sensors_chip_name& chip, const sensors_feature& feature) const;
        std::string adapterOf(const sensors_chip_name& chip) const;  // the bus's name; empty for none
        std::string nameOf(const sensors_chip_name& chip) const;     // libsensors's: lm75-i2c-0-48

        // Ends the search; to be called last. False where memory or descriptors ran out on the way: something may be
        // missing then.
        bool end();

      private:
        LibSensors& m_sensors;
        int m_status = -1;  // of sensors_init
    };

    // Empty where it cannot be read. The chip's files are looked for in the directory. Any number of threads at once.
    std::optional<double> read(const sensors_chip_name& chip, const std::string& directory, int subfeature) const;
    // libsensors's words for why it cannot be read; empty where it can.
    std::string whyUnread(const sensors_chip_name& chip, const std::string& directory, int subfeature) const;
    // Whether memory ran out since the last search began.
    bool wasShort() const { return m_memory.wasShort(); }

  private:
    struct Functions {
        decltype(&privateCopyUseMemory) useMemory;
        decltype(&privateCopyWatch) watch;
        decltype(&privateCopyEndWatch) endWatch;
        decltype(&privateCopyEnterThread) enterThread;
        decltype(&std::free) free;
        decltype(&sensors_init) init;
        decltype(&sensors_cleanup) cleanUp;
        decltype(&sensors_get_detected_chips) getDetectedChips;
        decltype(&sensors_get_features) getFeatures;
        decltype(&sensors_get_subfeature) getSubfeature;
        decltype(&sensors_get_label) getLabel;
        decltype(&sensors_get_adapter_name) getAdapterName;
        decltype(&sensors_get_value) getValue;
        decltype(&sensors_snprintf_chip_name) printName;
        decltype(&sensors_strerror) describe;
    };

    LibSensors() = default;
    bool open();
    bool findFunctions();
    bool setHooks();
    int getValue(const sensors_chip_name& chip, const std::string& directory, int subfeature, double& value) const;
    template <typename Function>
    bool findFunction(const char* name, Function& function);
    // Calls back; false where libsensors gave up instead of returning.
    template <typename Call>
    bool survives(Call call);

    TrackedMemory m_memory;
    void* m_library = nullptr;
    Functions m_functions{};
    bool m_gaveUp = false;
};

#endif
