// MOF's declarations: classes and qualifiers. Not thread-safe.
#ifndef ZELSENSORS_MOF_MOFPARSER_H
#define ZELSENSORS_MOF_MOFPARSER_H

#include <string>
#include <string_view>
#include <vector>

#include "mof/MofValues.h"
#include "mof/Schema.h"

namespace mof {

// Descends through the grammar with one token of foresight. No rule calls itself.
class Parser : private ValueParser {
  public:
    // Text and schema must outlive the parser.
    Parser(std::string_view text, const std::string& file, Schema& schema);

    // Adds all declarations to the schema. Throws MofError.
    void parse();

  private:
    void declaration();
    void pragma();
    void qualifierDeclaration();
    Names parenthesised(const Names& known, const char* expected);
    void classDeclaration(std::vector<Qualifier> qualifiers);
    void feature(Class& declaration, Names& properties, Names& methods);
    void property(Class& declaration, Element element);
    void method(Class& declaration, Element result);
    Parameter parameter();
    Element element();
    void elementType(Element& element);
    void array(Element& element);

    Schema& m_schema;
};

}  // namespace mof

#endif
