// Work for the ranks of MPI:    mpirun -n RANKS parallel_mpi [BLOCKS]
#define OMPI_SKIP_MPICXX 1
#define MPICH_SKIP_MPICXX 1
#include <mpi.h>

#include "work.h"

int main(int count, char** words) {
    using namespace parallel;
    MPI_Init(&count, &words);
    int rank, ranks;
    MPI_Comm_rank(MPI_COMM_WORLD, &rank);
    MPI_Comm_size(MPI_COMM_WORLD, &ranks);
    try {
        const std::uint64_t blocks = count > 1 ? count_of(words[1]) : 100;
        constexpr std::uint32_t seed = 2024;
        const Part part(blocks, (std::uint64_t)rank, (std::uint64_t)ranks);

        // Every sum is made by one rank and is 0 in the others: adding them is exact.
        std::vector<double> mine(blocks), sums(blocks);
        for (std::uint64_t b = part.first; b < part.last; ++b) mine[b] = Option().block(seed, b);
        MPI_Reduce(mine.data(), sums.data(), (int)blocks, MPI_DOUBLE, MPI_SUM, 0, MPI_COMM_WORLD);
        if (rank == 0) print_value(sums);

        Summary summary;
        for (std::uint64_t b = part.first; b < part.last; ++b)
            summary.add(Data::observations, Data::block(seed, b).data());
        constexpr int state = 1;
        if (rank > 0) {
            const std::vector<char> image = summary.image();
            MPI_Send(image.data(), (int)image.size(), MPI_BYTE, 0, state, MPI_COMM_WORLD);
        } else {
            Summary all;
            all.merge(summary);
            for (int other = 1; other < ranks; ++other) {
                MPI_Status status;
                int size;
                MPI_Probe(other, state, MPI_COMM_WORLD, &status);
                MPI_Get_count(&status, MPI_BYTE, &size);
                std::vector<char> image((std::size_t)size);
                MPI_Recv(image.data(), size, MPI_BYTE, other, state, MPI_COMM_WORLD,
                         MPI_STATUS_IGNORE);
                Summary theirs;
                theirs.load(image.data(), image.size());
                all.merge(theirs);
            }
            all.print();
        }
    } catch (const std::exception& problem) {
        std::fprintf(stderr, "parallel_mpi, rank %d: %s\n", rank, problem.what());
        MPI_Abort(MPI_COMM_WORLD, 1);
    }
    MPI_Finalize();
}
