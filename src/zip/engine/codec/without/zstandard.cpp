#include "zip/engine/codec/optional_codecs.h"

namespace zip_engine {

MakeDecoder zstandardDecoder() { return nullptr; }

MakeEncoder zstandardEncoder() { return nullptr; }

}  // namespace zip_engine
