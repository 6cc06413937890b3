#include "empty.h"

int EmptyGetter(void* /*handle*/, bool use_cached) {
  return use_cached ? 1 : 0;
}
