// Root may open every file, whatever its mode: a test that expects a refusal gives up root's rights.
#ifndef ZELSENSORS_TESTS_WITHOUTROOTSRIGHTS_H
#define ZELSENSORS_TESTS_WITHOUTROOTSRIGHTS_H

// While it lives, this thread may open only what its user's file modes allow, as if it were not root.
class WithoutRootsRights {
  public:
    WithoutRootsRights();
    ~WithoutRootsRights();
    WithoutRootsRights(const WithoutRootsRights&) = delete;
    WithoutRootsRights& operator=(const WithoutRootsRights&) = delete;

  private:
    unsigned m_effective[2];
};

#endif
