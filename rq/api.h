#pragma once

/// Exported from libRQ.
#define RQ_API __attribute__((visibility("default")))
