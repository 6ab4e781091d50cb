#include "api/buffer_pools.h"

#include "buffers/fixed_format_vector_buffer_pool.h"
#include "buffers/multi_format_buffer_pool.h"

namespace korvel::internal {

std::shared_ptr<img::buffer::IfcMultiFormatBufferPool> MakeBufferPool(size_t numBuffers) {
  return std::make_shared<img::buffer::MultiFormatBufferPool>(
      std::make_shared<img::buffer::FixedFormatVectorBufferPool::Factory>(), numBuffers);
}

}  // namespace korvel::internal
