// The editor shows and edits text through the editing engine's buffer interface.
#pragma once

#include "editing/text_buffer.hpp"
