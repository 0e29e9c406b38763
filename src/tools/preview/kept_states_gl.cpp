#include "tools/preview/kept_states.h"

struct kept_state {
    uint64_t frame;
};

state_keeper::state_keeper() = default;
state_keeper::~state_keeper() = default;

void keeper_restart(state_keeper& k, stage&)
{
    k.states.clear();
    k.exact = true;
    k.settling = false;
}

void keeper_go(state_keeper& k, stage& s, uint64_t frame, double)
{
    stage_draw(s, frame);
    k.target = frame;
}

bool keeper_settle(state_keeper& k, stage&, double)
{
    k.settling = false;
    return false;
}

double keeper_progress(const state_keeper&)
{
    return 1;
}

uint64_t keeper_memory(const state_keeper&)
{
    return 0;
}
