#include "zip/engine/codec/optional_codecs.h"

namespace zip_engine {

MakeDecoder bzip2Decoder() { return nullptr; }

}  // namespace zip_engine
