// The order in which the texture nodes will be computed, looked at before it happens.
#pragma once

struct document_reader;

// After section 2: warns of nodes that are never computed, because they feed each other in
// a circle or wait for such nodes, and of inputs that are computed only after the node that
// reads them. Both read black, and nothing else tells why.
void check_node_graph(document_reader& reader);
