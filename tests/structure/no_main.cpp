// The program of a floor that stands alone: only its linking counts.
int main()
{
    return 0;
}
