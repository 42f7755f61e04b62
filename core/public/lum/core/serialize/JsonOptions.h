#pragma once

namespace lum::core {

/// How a store is written as JSON. With the defaults the text is readable, and says enough for a
/// reader to rebuild the store.
/// Threads: a plain value.
struct JsonOptions {
    bool compact = false;           ///< Text without lines and blanks.
    bool typedKeys = true;          ///< Keys of key maps and tables carry the type of their value.
    bool colorsAsIntegers = false;  ///< Colours as packed decimal numbers, not as hexadecimal text.

    /// The shortest form, for a browser: compact, keys without types, colours as numbers. It does
    /// not say enough to be read back.
    static JsonOptions SlimWebFormat();
};

inline JsonOptions JsonOptions::SlimWebFormat() {
    JsonOptions options;
    options.compact = true;
    options.typedKeys = false;
    options.colorsAsIntegers = true;
    return options;
}

}  // namespace lum::core
