// Closes a file descriptor at the end of its scope.
#ifndef ZELSENSORS_FILEDESCRIPTOR_H
#define ZELSENSORS_FILEDESCRIPTOR_H

#include <unistd.h>

class FileDescriptor {
  public:
    // Takes what open() answered: a descriptor to own, or a negative number.
    explicit FileDescriptor(int descriptor) : m_descriptor(descriptor) {}
    ~FileDescriptor() {
        if (isOpen()) close(m_descriptor);
    }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;

    bool isOpen() const { return m_descriptor >= 0; }
    int get() const { return m_descriptor; }

  private:
    int m_descriptor;
};

#endif
