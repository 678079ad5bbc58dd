// A source whose answers a test gives.
#ifndef ZELSENSORS_TESTS_HOST_FAKESOURCE_H
#define ZELSENSORS_TESTS_HOST_FAKESOURCE_H

#include <functional>
#include <string>
#include <vector>

#include "source/Source.h"

class FakeSource : public host::Source {
  public:
    using Answer = std::function<broker::Reply(const broker::ObjectPath&)>;
    Answer names;
    Answer instances;
    Answer get;
    std::function<bool()> restarted = [] { return false; };

    broker::Reply enumerateInstanceNames(const broker::ObjectPath& path) override { return names(path); }
    broker::Reply enumerateInstances(const broker::ObjectPath& path) override { return instances(path); }
    broker::Reply getInstance(const broker::ObjectPath& path) override { return get(path); }
    broker::Reply createInstance(const broker::ObjectPath& /*path*/, const broker::Instance& /*instance*/) override {
        return {};
    }
    broker::Reply modifyInstance(const broker::ObjectPath& /*path*/, const broker::Instance& /*instance*/) override {
        return {};
    }
    broker::Reply deleteInstance(const broker::ObjectPath& /*path*/) override { return {}; }
    broker::Reply execQuery(const broker::ObjectPath& /*path*/, const std::string& /*query*/,
                            const std::string& /*language*/) override {
        return {};
    }
    bool restart() override { return restarted(); }
};

#endif
