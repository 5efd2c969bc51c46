// Building and reading the index array text of a node record: the row ids of the node's status,
// property, user data and enclosure rows as tagged sub-arrays, e.g. "s:12,13;p:7;u:40;e:3".
//
// Each sub-array is its tag letter, ':' and the ids in decimal joined by ','; sub-arrays are
// joined by ';' in the order s, p, u, e and an empty one is left out with its separator.
//
// Reading follows the stored format loosely on purpose, so that any text gives a defined result:
// the first occurrence of the tag letter anywhere in the text starts the sub-array, the one
// character after it is skipped unseen (normally ':'), and numbers are read up to the next ';' or
// the end of the text. Every number text, also an empty one, yields one value: what stream
// extraction reads from its start (leading blanks and a sign allowed, trailing junk ignored), or 0
// when nothing numeric can be read or the number does not fit in 64 bits. So "s:" gives {0},
// "s:1,,2" gives {1, 0, 2} and "s:abc;u:5" gives {0} for 's' and {5} for 'u'.
//
// Thread safety: stateless; safe from any thread.
#ifndef ANNOTATIONLAYER_INDEX_ARRAY_H
#define ANNOTATIONLAYER_INDEX_ARRAY_H

#include <cstdint>
#include <string>
#include <vector>

namespace AnnotationLayerInner {

constexpr char kIndexTagStatus = 's';
constexpr char kIndexTagProperty = 'p';
constexpr char kIndexTagUserdata = 'u';
constexpr char kIndexTagEnclosure = 'e';

// The sub-array text of `ids` under `tag`, e.g. "s:1,2"; empty when `ids` is empty.
std::string IndexArrayPart(char tag, const std::vector<int64_t>& ids);

// When `ids` is not empty, `text` becomes its sub-array alone; otherwise `text` is kept as it is
// (records are filled this way on creation, and a kept text is what callers rely on).
void ReplaceIndexArrayPart(std::string& text, char tag, const std::vector<int64_t>& ids);

// When `ids` is not empty, appends its sub-array to `text`, after a ';' if `text` is not empty.
void AppendIndexArrayPart(std::string& text, char tag, const std::vector<int64_t>& ids);

// The ids of the sub-array `tag` of `text`; empty when the tag letter does not occur.
std::vector<int64_t> ParseIndexArray(const std::string& text, char tag);

}  // namespace AnnotationLayerInner

#endif  // ANNOTATIONLAYER_INDEX_ARRAY_H
