/* A program without any of what makes mistakes hard to exploit, to see that the check finds that out. */
int main(void) {
    return 0;
}
