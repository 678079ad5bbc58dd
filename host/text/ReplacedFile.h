// A file that others read at any time, and that is therefore only ever replaced as a whole.
#ifndef ZELSENSORS_TEXT_REPLACEDFILE_H
#define ZELSENSORS_TEXT_REPLACEDFILE_H

#include <string>
#include <string_view>

namespace host {

// It is written as .NAME.tmp beside and then renamed. Readers see the old text or the new one. Two writers of one file
// would spoil each other's.
class ReplacedFile {
  public:
    enum class Kind {
        ForAll,   // mode 0644 whatever the umask; not forced to the disk: worth nothing after a restart of the machine
        Lasting,  // mode 0600; forced to the disk, so that the power may fail at any time
        New,      // as Lasting; nothing is replaced: where the file is there already, replace() takes the first name of
                  // PATH.1, PATH.2 and so on that is free, and throws an OutputError that tells it
    };

    // Touches nothing yet. A path without a directory means the current one.
    explicit ReplacedFile(const std::string& path, Kind kind = Kind::ForAll);

    // Throws what replace() would throw as things stand, as far as that can be seen without writing: for those who work
    // long before they write.
    void foresee() const;

    // Throws OutputError, which names the file, where it cannot be; what is there then is the old file, or none, and
    // nothing is left beside it. Only a regular file is replaced: no directory, device or symbolic link.
    void replace(std::string_view text) const;

    // Removes it where it is a regular file. Throws OutputError where that fails; that there is none is fine.
    void remove() const;

    // As remove(), with what a signal's thread may call at any time, and without a word.
    void removeSilently() const noexcept;

  private:
    bool isReplaceable() const;  // a regular file, or nothing that is known
    std::string directory() const;
    void write(std::string_view text) const;
    bool takeName(const std::string& name) const;
    void takeAnotherName() const;
    void forceName() const;

    std::string m_path;
    std::string m_temporary;
    Kind m_kind;
};

}  // namespace host

#endif
