#pragma once

#include "lum/core/serialize/KeyPathSerializerCache.h"
#include "lum/core/store/KeyPath.h"

namespace lum::core {

// Key paths as text; KeyPath::ParseString says what the text looks like. Types are written in their
// full form, which reads back as the same type; the short form of a key map or table leaves out its
// members.
//
// All forms append to `out`, and take the text of segments that `cache` knows from there; it may be
// null. A segment with an empty name leaves no text, whatever its type.
// Threads: no state but the cache. Errors: std::out_of_range where a type is an external one that
// is not registered; LumLogicException, Unspecified, for a type object that is not of the class of
// its store type. `out` then holds what was written so far.

// The segments, separated by "/". The separator stands before a segment where the path's text so
// far is not empty, so that empty names at its start leave none. Types are written, in full, or not
// at all.
void AppendKeyPath(TStringCore& out, const KeyPath& path, bool includeTypes,
                   KeyPathSerializerCache* cache);

// The name, then ":" and the type where there is one and `includeType` is set, in the full form
// where `fullForm` is set.
void AppendKeySegment(TStringCore& out, const KeySegment& segment, bool includeType, bool fullForm,
                      KeyPathSerializerCache* cache);

}  // namespace lum::core
