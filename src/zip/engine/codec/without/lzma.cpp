#include "zip/engine/codec/optional_codecs.h"

namespace zip_engine {

MakeDecoder lzmaDecoder() { return nullptr; }

MakeDecoder xzDecoder() { return nullptr; }

}  // namespace zip_engine
