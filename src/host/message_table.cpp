#include "host/message_table.h"

#include <iterator>

namespace {

YQ_LStrEntry g_entries[] = {
    {"$$$/QZ/VRL/LStr/0000=invalid shape type", {0, 0, 0}},
    {"$$$/QZ/VRL/LStr/0001=pixel buffer for feathering", {0, 0, 0}},
    {"$$$/QZ/VRL/LStr/0002=gaussian weight array", {0, 0, 0}},
    {"$$$/QZ/VRL/LStr/0003=out of memory doing mask expansion", {0, 0, 0}},
    {"$$$/QZ/VRL/LStr/0004=non-specific error doing mask expansion", {0, 0, 0}},
    {nullptr, {-1, -1, 0}},  // ends the table
};

YQ_LStrTable VRLp_MessageTable = {"VRL", std::size(g_entries), g_entries};

}  // namespace

YQ_LStrTable* VRL_G_zref = &VRLp_MessageTable;
