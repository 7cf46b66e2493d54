#pragma once

/** Edits long messages as a host may, and prints the cost of each edit beside the cost of parsing the message. Returns
    whether no edit costs more than 20 times as much as the parse. */
bool compareHostileEdits();
