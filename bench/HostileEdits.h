#pragma once

/** Edits long messages in the ways a host may, prints what each costs beside the parse of the message, and tells whether
    none costs more than 20 times as much. */
bool compareHostileEdits();
