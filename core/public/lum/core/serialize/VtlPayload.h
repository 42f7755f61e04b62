#pragma once

#include <unordered_set>
#include <vector>

#include "lum/core/Export.h"
#include "lum/core/store/KeyPath.h"
#include "lum/core/utility/LumString.h"
#include "lum/core/vtl/GraphEdge.h"
#include "lum/core/vtl/TransformSpec.h"

/// A planned program as one text, for whoever stores it or sends it elsewhere: the edges of its
/// graph, the keys that may be updated, and its statements, each under a line of its own that says
/// so. Lines end with a line feed.
///
///     (graph)
///     3,,4,5,a/b,c                  source, empty field, sinks, key, letter of the buffer's type
///     ,4,a/c,i                      an edge without a source
///     (updatable-keys)
///     a/b
///     (vtl)
///     a/b:i -> map (negate) -> a/c:i
///
/// Keys of edges and updatable keys are written without types, and so come back without. Comments
/// stay behind.
///
/// Threads: any; both work on their arguments alone. Ownership: nothing is kept.
/// Both run inside a metrics scope of the kind Vtl, "lum_core_MakeVtlPayload" and
/// "lum_core_ParseVtlPayload".
namespace lum::core {

/// The text of a program. Updatable keys stand in the order in which the set hands them out, which
/// readers must not rely on.
///
/// Not everything reads back: an edge whose key is empty, or begins with a name that is a number,
/// is refused by ParseVtlPayload; and what TransformsToPayloadString says of statements.
///
/// Errors: LumLogicException Unspecified, with a report, for a buffer type that has no letter;
///   those of TransformsToPayloadString; std::length_error beyond 2^30 units.
/// Cost: linear in the text.
LUM_CORE_API TStringCore MakeVtlPayload(const std::vector<TransformSpec>& transforms,
                                        const std::vector<GraphEdge>& edges,
                                        const std::unordered_set<KeyPath>& updatableKeys);

/// The program of such a text, in place of what the three last arguments held. All three sections
/// have to be there, in their order, with nothing but the line feed behind their names; empty lines
/// are skipped. Keys may have types. What follows the letter of an edge, and the word that begins
/// with it, is not looked at.
///
/// Errors, reported but for those of statements that ParseVtlList does not report:
///   InvalidPayloadContent where a section is missing or out of order; UnexpectedToken, with the
///   line as details, for an edge or a key of another form; LumLogicException SeveralBufferSources
///   for an edge with two sources, and Unspecified for a letter that no buffer type has;
///   OutOfRange, plain, for a node beyond 32 bits; those of KeyPath::ParseString and of
///   ParseVtlList.
///   The sections are given one after the other, edges first and statements last: those before the
///   one that failed are new, that one and those behind it as they were.
/// Cost: linear in the text, in time and memory.
LUM_CORE_API void ParseVtlPayload(const TStringCore& text, std::vector<TransformSpec>& transforms,
                                  std::vector<GraphEdge>& edges,
                                  std::unordered_set<KeyPath>& updatableKeys);

}  // namespace lum::core
