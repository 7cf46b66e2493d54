#include "tests/docs/preludes/bytes.cpp"
const KxSipReading reading = KxSipReading::sRead(bytes);
const KxHandle<KxSipRequest> request(reading.message->as<KxSipRequest>());
