#pragma once

// Work in numbered pieces on several threads, and what comes of it in the order of the numbers on the calling one.
//
//     InOrder<std::string, Printer> pages(
//         threads, count, [] { return Printer(); }, [](Printer& printer, std::size_t i) { return printer.PageOf(i); });
//     while (const std::optional<std::string> page = pages.Next())
//         Print(*page);
//
// Each thread makes itself a `State` to work with. The calling thread works too, while it waits. None goes on more than
// a few pieces ahead of what was taken. What is thrown in a piece is thrown again where its result is asked for.

#include <condition_variable>
#include <cstddef>
#include <exception>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

template <class Result, class State>
class InOrder
{
public:
    /// If the system does not give so many threads, or the memory for them, there are fewer.
    InOrder(std::size_t threads, std::size_t count, std::function<State()> makeState,
            std::function<Result(State&, std::size_t)> work)
        : m_count(count),
          m_makeState(std::move(makeState)),
          m_work(std::move(work)),
          m_done(piecesAhead * threads),
          m_state(m_makeState())
    {
        try
        {
            for (std::size_t i = 1; i < threads && i < count; ++i)
                m_threads.emplace_back([this] { Work(); });
        }
        catch (const std::exception&)
        {
        }
    }
    InOrder(const InOrder&) = delete;
    InOrder& operator=(const InOrder&) = delete;

    /// Pieces that were begun are ended.
    ~InOrder()
    {
        {
            const std::lock_guard lock(m_mutex);
            m_count = m_begun;
        }
        m_changed.notify_all();
        for (std::thread& thread : m_threads)
            thread.join();
    }

    /// None behind the last one.
    std::optional<Result> Next()
    {
        std::unique_lock lock(m_mutex);
        if (m_taken == m_count)
            return std::nullopt;
        while (!PieceOf(m_taken).isDone)
        {
            if (MayBegin())
                DoOne(m_state, lock);
            else
                m_changed.wait(lock);
        }
        Piece piece = std::exchange(PieceOf(m_taken++), {});
        m_changed.notify_all();
        if (piece.failure != nullptr)
            std::rethrow_exception(piece.failure);
        return std::move(piece.result);
    }

private:
    struct Piece
    {
        bool isDone = false;
        std::optional<Result> result;
        std::exception_ptr failure;
    };

    static constexpr std::size_t piecesAhead = 4;

    Piece& PieceOf(std::size_t number) { return m_done[number % m_done.size()]; }
    bool MayBegin() const { return m_begun < m_count && m_begun < m_taken + m_done.size(); }

    void DoOne(State& state, std::unique_lock<std::mutex>& lock)
    {
        const std::size_t number = m_begun++;
        lock.unlock();
        Piece piece;
        try
        {
            piece.result = m_work(state, number);
        }
        catch (...)
        {
            piece.failure = std::current_exception();
        }
        piece.isDone = true;
        lock.lock();
        PieceOf(number) = std::move(piece);
        m_changed.notify_all();
    }

    /// A thread that gets no state leaves the work to the others.
    void Work()
    try
    {
        State state = m_makeState();
        std::unique_lock lock(m_mutex);
        while (m_begun < m_count)
        {
            if (MayBegin())
                DoOne(state, lock);
            else
                m_changed.wait(lock);
        }
    }
    catch (...)
    {
    }

    std::size_t m_count;
    std::function<State()> m_makeState;
    std::function<Result(State&, std::size_t)> m_work;
    std::mutex m_mutex;
    std::condition_variable m_changed; ///< there is one more result, or room for one
    std::vector<Piece> m_done;         ///< in a ring
    std::size_t m_begun = 0;
    std::size_t m_taken = 0;
    State m_state; ///< of the calling thread
    std::vector<std::thread> m_threads;
};
