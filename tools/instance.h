// One context of the library, given back at the end of the scope.
#pragma once

#include <ppl.h>

#include "failure.h"

namespace tool {

class Instance {
 public:
  Instance() : context_(ppl_init()) {
    if (!context_) fail("all eight contexts of the library are in use");
  }
  ~Instance() { ppl_free(context_); }
  Instance(const Instance&) = delete;
  Instance& operator=(const Instance&) = delete;
  ppl_context* get() const { return context_; }

 private:
  ppl_context* context_;
};

}  // namespace tool
