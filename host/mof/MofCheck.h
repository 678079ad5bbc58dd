// The rules of MOF that stand outside its grammar.
#ifndef ZELSENSORS_MOF_MOFCHECK_H
#define ZELSENSORS_MOF_MOFCHECK_H

#include <string>
#include <vector>

#include "mof/MofLexer.h"
#include "mof/Schema.h"

namespace mof {

// What a qualifier's flavor can be.
const Names& flavorWords();

// What the grammar does not say about a class: that its superclass is there, and that its qualifiers are declared, with
// values of their types, for what they stand at. Qualifiers are checked only where the schema declares any.
class Checker {
  public:
    // Both must outlive the checker.
    Checker(const Lexer& lexer, const Schema& schema) : m_lexer(lexer), m_schema(schema) {}

    // Throws MofError.
    void check(const Class& declaration) const;

  private:
    void check(const std::vector<Qualifier>& qualifiers, const Names& scopes) const;
    void check(const Element& element) const;
    void check(const Method& method) const;

    const Lexer& m_lexer;
    const Schema& m_schema;
};

}  // namespace mof

#endif
