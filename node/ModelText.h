#ifndef TUL_NODE_MODEL_TEXT_H
#define TUL_NODE_MODEL_TEXT_H

#include <span>
#include <string>
#include <vector>

#include "Schema.h"
#include "TransactionMaster.h"

namespace TulNode {

/** The words of a line: blanks separate them, double quotes hold one together. Refusal for an open quote. */
std::vector<std::string> splitWords(const std::string& line);

/**
 * Reads "name=value" words. A sequence's values have commas between them, an enumeration is a literal or its
 * number, and nothing behind the '=' takes the value away. Refusal: the attribute's or the value's.
 */
Attributes parseAttributes(const ClassDefinition& definition, std::span<const std::string> words);

/** "name=value" as parseAttributes reads it; one with blanks in it stands in quotes. */
std::string formatAttribute(const AttributeDefinition& definition, const AttributeValue& value);

/** "CREATED DN name=value ..." */
std::string formatChange(const MoChange& change);

/**
 * Makes the MOs of a model text in one transaction. Each line is "create DN [name=value ...]", empty, or a comment
 * that begins with #. std::runtime_error names the source and the line; nothing is in force then.
 */
void applyModel(TransactionMaster& transactions, const std::string& text, const std::string& source);

}  // namespace TulNode

#endif
