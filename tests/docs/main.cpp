
// Runs the block with the given number. blocks.py replaces BLOCKS by its functions.
int main(int argc, char** argv) {
    static void (*const blocks[])() = {BLOCKS};
    try {
        blocks[argc > 1 ? std::atoi(argv[1]) : 0]();
    } catch (const KxHandle<KxException>& failure) {
        std::cout << "threw " << failure->getExceptionMessage() << "\n";
        return 1;
    }
    return 0;
}
