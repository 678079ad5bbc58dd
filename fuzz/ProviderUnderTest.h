// The provider as its factory makes it, in the fuzzer's own process.
#ifndef ZELSENSORS_FUZZ_PROVIDERUNDERTEST_H
#define ZELSENSORS_FUZZ_PROVIDERUNDERTEST_H

#include <broker/Broker.h>

#include <string>

class ProviderUnderTest {
  public:
    explicit ProviderUnderTest(broker::Broker& broker);
    ~ProviderUnderTest();
    ProviderUnderTest(const ProviderUnderTest&) = delete;
    ProviderUnderTest& operator=(const ProviderUnderTest&) = delete;

    enum class Operation { Names, Instances, Get };
    // One request. That it left nothing behind at the broker has been checked when it returns.
    broker::Reply ask(Operation operation, const broker::ObjectPath& path);
    void cleanUp();

  private:
    broker::Broker& m_broker;
    CMPIInstanceMI* m_mi;
    bool m_isCleanedUp = false;
};

#endif
