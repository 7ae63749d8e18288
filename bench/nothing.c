/* Nothing: what it links is the point. */
typedef int nothing;
